// What a file says about itself: type, tags and cover picture.

#include <gtest/gtest.h>

#include "e2e/FormatText.h"
#include "e2e/Opened.h"
#include "support/Demuxer.h"

namespace orvel::test {

TEST(FileMeta, holdsJustItsEntries) {
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"mp4_small.mp4", "mime=video/mp4"},
        // Only sound, which gives the type; the last one's is no track.
        {"mp4_cover.mp4", "mime=audio/eac3 albumart=picture year=2011 "
                          "date=2011-05-01T10:00:00.000000Z"},
        {"mov_sounds.mov", "mime=audio/eac3"},
        {"mkv_sounds.mkv", "mime=audio/vnd.dts"},
        {"asf_wma.wma", "mime=video/x-ms-asf"},
        {"mkv_video_cover.mkv", "mime=video/x-matroska"},
        {"mp3_cover.mp3", "mime=audio/mpeg albumart=picture title=Title artist=Artist album=Album"},
        {"mkv_h264_eac3.mkv", "mime=video/x-matroska title=Title artist=Artist album=Album"},
    };
    // clang-format on
    for (const auto& [file, entries] : cases) {
        host::MemorySource source(mediaBytes(file));
        const Demuxer demuxer(source, demuxerOf(file));
        NamedBytes named;  // what libavformat attaches to a stream
        for (unsigned i = 0; i < demuxer.context()->nb_streams; ++i) {
            const AVPacket& picture = demuxer.context()->streams[i]->attached_pic;
            if (!picture.data) continue;
            named.push_back({"picture", {picture.data, picture.data + picture.size}});
        }
        const auto extractor = open(source);
        ASSERT_TRUE(extractor);
        host::Format format;
        ASSERT_EQ(extractor->fileFormat(&format), android::OK);
        EXPECT_EQ(entriesOf(format, named), entriesOf(entries)) << file;
    }
}

}  // namespace orvel::test
