#include "render/TrackLine.h"

#include <media/stagefright/foundation/MediaDefs.h>
#include <strings.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "Words.h"
#include "framework/Format.h"

namespace orvel::probe {
namespace {

constexpr int kConstraintSet1 = 1 << 9;  // as FFmpeg counts constrained profiles

/** Parts with commas between them. */
struct Line {
    void add(const std::string& part) { text += (text.empty() || part.empty() ? "" : ", ") + part; }
    std::string text;
};

std::string number(const Json& format, const char* key) {
    return std::to_string(intOf(format, key));
}

std::string pcmText(int64_t encoding) {
    static const std::map<int64_t, const char*> kTexts = {
            {2, "16-bit"}, {3, "8-bit"}, {4, "float"}, {100, "32-bit"}};
    const auto text = kTexts.find(encoding);
    return text == kTexts.end() ? "PCM of unknown encoding" : text->second + std::string(" PCM");
}

std::string profileText(AVCodecID codec, int profile) {
    const char* name = avcodec_profile_name(codec, profile);
    return name ? name : "profile " + std::to_string(profile);
}

// Profile and level of a configuration record: ISO/IEC 14496-15, 5.3.3.1 and 8.3.3.1.
std::string recordText(const std::string& record, bool isHevc) {
    const auto byte = [&record](size_t at) {
        return at < record.size() ? static_cast<uint8_t>(record[at]) : 0;
    };
    if (byte(0) != 1) return "";
    const int level = isHevc ? byte(12) / 3 : byte(3);
    int profile = isHevc ? byte(1) & 31 : byte(1);
    if (!isHevc && profile == 66 && (byte(2) & 0x40)) profile |= kConstraintSet1;
    return profileText(isHevc ? AV_CODEC_ID_HEVC : AV_CODEC_ID_H264, profile) +
           formatted("@%d.%d", level / 10, level % 10);
}

void addVideo(const Json& format, Line& line) {
    line.add(number(format, "width") + "x" + number(format, "height"));
    if (intOf(format, "rotation-degrees"))
        line.add("rotated " + number(format, "rotation-degrees"));
    if (intOf(format, "frame-rate")) line.add(number(format, "frame-rate") + " fps");
    const std::string mime = textOf(format, host::kKeyMime);
    const bool isHevc = mime == android::MEDIA_MIMETYPE_VIDEO_HEVC;
    if (!isHevc && mime != android::MEDIA_MIMETYPE_VIDEO_AVC) return;
    const std::string record = bytesOf(format, isHevc ? "csd-hevc" : "csd-avc");
    line.add(recordText(record.empty() ? bytesOf(format, "raw-codec-specific-data") : record,
                        isHevc));
}

void addAudio(const Json& format, Line& line) {
    line.add(number(format, "sample-rate") + " Hz");
    const std::string channels = number(format, "channel-count");
    line.add(channels == "1" ? "mono" : channels == "2" ? "stereo" : channels + " channels");
    const std::string bits = number(format, "bits-per-sample");
    if (bits != "0") line.add(bits + " bits");
    const std::string mime = textOf(format, host::kKeyMime);
    if (mime == android::MEDIA_MIMETYPE_AUDIO_RAW && format.contains("pcm-encoding")) {
        // 24-bit samples are announced as 32-bit ones; "bits" says how they are packed.
        const std::string text = pcmText(intOf(format, "pcm-encoding"));
        if (text != bits + "-bit PCM") line.add("as " + text);
    }
    if (const int64_t type = intOf(format, "aac-profile"); type > 0) {
        line.add(profileText(AV_CODEC_ID_AAC, static_cast<int>(type) - 1) + " (object type " +
                 std::to_string(type) + ")");
    }
    if (const int64_t rate = intOf(format, "bitrate"); rate != 0) line.add(bitrateText(rate));
    const std::string delay = number(format, "encoder-delay"),
                      padding = number(format, "encoder-padding");
    if (delay != "0" || padding != "0") line.add("delay " + delay + " + padding " + padding);
    if (intOf(format, "big-buffer-flags")) line.add("big buffers");
}

// What the decoder is configured with.
void addConfiguration(const Json& format, Line& line) {
    for (const char* key : {"csd-avc", "csd-hevc", "aac-codec-specific-data",
                            "raw-codec-specific-data", "text-format-data"}) {
        const Json& record = objectOf(format, key);
        if (record.empty()) continue;
        const std::string lengths = number(format, "nal-length-size");
        line.add(std::string(key) + " " + sizeText(intOf(record, "size")) +
                 (lengths == "0" ? "" : " (" + lengths + "-byte lengths)"));
    }
}

}  // namespace

std::string trackLine(const Json& format) {
    const std::string mime = textOf(format, host::kKeyMime);
    Line line;
    if (strncasecmp(mime.c_str(), "video/", 6) == 0) addVideo(format, line);
    if (strncasecmp(mime.c_str(), "audio/", 6) == 0) addAudio(format, line);
    addConfiguration(format, line);
    const std::string language = textOf(format, "language");
    if (language != "und") line.add(printable(language, 16));
    if (const int64_t us = intOf(format, host::kKeyDurationUs, -1); us >= 0)
        line.add(durationText(us));
    return line.text;
}

std::string pictureKind(const std::string& bytes) {
    static const std::pair<std::string, const char*> kMagics[] = {
            {"\xFF\xD8\xFF", "JPEG"}, {"\x89PNG", "PNG"},     {"BM", "BMP"},
            {"GIF8", "GIF"},          {{"II*\0", 4}, "TIFF"}, {{"MM\0*", 4}, "TIFF"}};
    for (const auto& [magic, kind] : kMagics)
        if (bytes.compare(0, magic.size(), magic) == 0) return kind;
    return "picture";
}

}  // namespace orvel::probe
