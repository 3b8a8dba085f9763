// What a file says about itself: type, tags and cover picture.

#include <gtest/gtest.h>

#include <algorithm>

#include "e2e/FormatText.h"
#include "e2e/Opened.h"
#include "support/Demuxer.h"

namespace orvel::test {

namespace {

struct FileCase {
    const char* file;
    const char* entries;     // all there are; picture: what libavformat attaches to a stream
    std::string brand = {};  // of an MP4 file
    const char* tags = "";   // NAME=TEXT, in front of an MP3 file
};
void PrintTo(const FileCase& c, std::ostream* out) {
    *out << c.file << " " << c.entries;
}

// clang-format off
const FileCase kCases[] = {
    {"mp4_small.mp4", "mime=video/quicktime", "qt  "},
    {"mp4_small.mp4", "mime=video/quicktime", "QT  "},
    {"mp4_small.mp4", "mime=video/quicktime", "mqt "},
    {"mp4_small.mp4", "mime=video/mp4", "qt1 "},
    {"mp4_small.mp4", "mime=video/3gpp2", "3g2a"},
    {"mp4_small.mp4", "mime=video/3gpp2", "kDDI"},
    {"mp4_small.mp4", "mime=video/mp4", "3gp4"},
    {"mp4_small.mp4", "mime=video/mp4", "isom"},
    // Only sound, which gives the type; the last one's is no track.
    {"mp4_cover.mp4", "mime=audio/eac3 albumart=picture year=2011 "
                      "date=2011-05-01T10:00:00.000000Z", "3g2a"},
    {"mov_sounds.mov", "mime=audio/eac3"},
    {"mkv_sounds.mkv", "mime=audio/vnd.dts"},
    {"asf_wma.wma", "mime=video/x-ms-asf"},
    {"mkv_video_cover.mkv", "mime=video/x-matroska"},
    {"mp3_cover.mp3", "mime=audio/mpeg albumart=picture title=Title artist=Artist album=Album"},
    {"mkv_h264_eac3.mkv", "mime=video/x-matroska title=Title artist=Artist album=Album"},
    {"mp3_cbr.mp3", "mime=audio/mpeg album=a artist=b albumartist=c composer=d genre=e title=f "
                    "year=2011 author=g cdtracknum=3/12 discnum=h compilation=1 "
                    "date=2011-05-01T10:00:00.000000Z lyricist=X", "",
     "ALBUM=a Artist=b album_artist=c composer=d genre=e title=f DATE=2011 author=g track=3/12 "
     "disc=h compilation=1 creation_time=2011-05-01T10:00:00.000000Z writer=X comment=no"},
    {"mp3_cbr.mp3", "mime=audio/mpeg location=+37.5090+127.0620/ capture-rate=120f", "",
     "location=+37.5090+127.0620 com.android.capture.fps=120.000000"},
    {"mp3_cbr.mp3", "mime=audio/mpeg location=+37.5+127.0/", "", "location=+37.5+127.0/"},
    {"mp3_cbr.mp3", "mime=audio/mpeg", "", "location="},
    {"mp3_cbr.mp3", "mime=audio/mpeg", "", "Location=+37/ com.android.Capture.fps=120"},
};
// clang-format on

}  // namespace

class FileMeta : public ::testing::TestWithParam<FileCase> {};
INSTANTIATE_TEST_SUITE_P(Media, FileMeta, ::testing::ValuesIn(kCases), [](const auto& info) {
    return asTestName(info.param.file) + "_" + std::to_string(info.index);
});

TEST_P(FileMeta, holdsJustItsEntries) {
    const FileCase& c = GetParam();
    Bytes bytes = mediaBytes(c.file);
    std::vector<std::pair<std::string, std::string>> tags;
    for (const std::string& tag : entriesOf(c.tags))
        tags.push_back({tag.substr(0, tag.find('=')), tag.substr(tag.find('=') + 1)});
    if (!tags.empty()) bytes = id3Tag(tags) + bytes;
    std::copy(c.brand.begin(), c.brand.end(), bytes.begin() + 8);  // ISO/IEC 14496-12, 4.3
    host::MemorySource source(bytes);
    const Demuxer demuxer(source, demuxerOf(c.file));
    for (const auto& [name, text] : tags)
        EXPECT_TRUE(av_dict_get(demuxer.context()->metadata, name.c_str(), nullptr, 0)) << name;
    NamedBytes named;
    for (unsigned i = 0; i < demuxer.context()->nb_streams; ++i) {
        const AVPacket& picture = demuxer.context()->streams[i]->attached_pic;
        if (picture.data) named.push_back({"picture", {picture.data, picture.data + picture.size}});
    }
    const auto extractor = open(source);
    ASSERT_TRUE(extractor);
    host::Format format;
    ASSERT_EQ(extractor->fileFormat(&format), android::OK);
    EXPECT_EQ(entriesOf(format, named), entriesOf(c.entries));
}

}  // namespace orvel::test
