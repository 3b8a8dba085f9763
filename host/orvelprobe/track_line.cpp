#include "track_line.h"

#include <media/stagefright/foundation/MediaDefs.h>
#include <strings.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "text.h"

namespace orvel::probe {
namespace {

class Line {
  public:
    void add(const std::string& part) {
        if (!mText.empty()) mText += ", ";
        mText += part;
    }
    std::string take() { return std::move(mText); }

  private:
    std::string mText;
};

const char* pcmEncodingText(int32_t encoding) {
    switch (encoding) {
        case 2:
            return "16-bit PCM";
        case 3:
            return "8-bit PCM";
        case 4:
            return "float PCM";
        case 100:
            return "32-bit PCM";
        default:
            return "PCM of unknown encoding";
    }
}

std::string bitrateText(int32_t bitsPerSecond) {
    if (bitsPerSecond < 10000) return std::to_string(bitsPerSecond) + " b/s";
    return std::to_string((static_cast<int64_t>(bitsPerSecond) + 500) / 1000) + " kb/s";
}

void addVideo(const FormatReport& format, Line& line) {
    line.add(std::to_string(format.int32("width")) + "x" + std::to_string(format.int32("height")));
    if (const int32_t degrees = format.int32("rotation-degrees"); degrees != 0) {
        line.add("rotated " + std::to_string(degrees));
    }
    if (const int32_t rate = format.int32("frame-rate"); rate != 0) {
        line.add(std::to_string(rate) + " fps");
    }
}

void addAudio(const FormatReport& format, bool isRaw, Line& line) {
    line.add(std::to_string(format.int32("sample-rate")) + " Hz");
    const int32_t channels = format.int32("channel-count");
    line.add(channels == 1   ? "mono"
             : channels == 2 ? "stereo"
                             : std::to_string(channels) + " channels");
    const int32_t bits = format.int32("bits-per-sample");
    const auto* encoding = format.find<int32_t>("pcm-encoding");
    if (bits != 0) line.add(std::to_string(bits) + " bits");
    if (isRaw && encoding) {
        // 24-bit samples are announced as 32-bit ones; "bits" says how they are packed.
        const std::string text = pcmEncodingText(*encoding);
        if (text != std::to_string(bits) + "-bit PCM") line.add("as " + text);
    }
    if (const auto* profile = format.find<int32_t>("aac-profile")) {
        line.add("object type " + std::to_string(*profile));
    }
    if (const int32_t bitrate = format.int32("bitrate"); bitrate != 0) {
        line.add(bitrateText(bitrate));
    }
    const int32_t delay = format.int32("encoder-delay");
    const int32_t padding = format.int32("encoder-padding");
    if (delay != 0 || padding != 0) {
        line.add("delay " + std::to_string(delay) + " + padding " + std::to_string(padding));
    }
    if (format.int32("big-buffer-flags") != 0) line.add("big buffers");
}

// What the decoder is configured with.
void addConfiguration(const FormatReport& format, Line& line) {
    static constexpr const char* kKeys[] = {"csd-avc", "csd-hevc", "aac-codec-specific-data",
                                            "raw-codec-specific-data", "text-format-data"};
    for (const char* key : kKeys) {
        const auto* record = format.find<host::FormatBytes>(key);
        if (!record) continue;
        std::string text = std::string(key) + " " + sizeText(record->size());
        if (const int32_t length = format.int32("nal-length-size"); length != 0) {
            text += " (" + std::to_string(length) + "-byte lengths)";
        }
        line.add(text);
    }
}

}  // namespace

std::string trackLine(const FormatReport& format) {
    const std::string mime = format.text(host::kKeyMime);
    Line line;
    if (strncasecmp(mime.c_str(), "video/", 6) == 0) addVideo(format, line);
    if (strncasecmp(mime.c_str(), "audio/", 6) == 0) {
        addAudio(format, strcasecmp(mime.c_str(), android::MEDIA_MIMETYPE_AUDIO_RAW) == 0, line);
    }
    addConfiguration(format, line);
    const std::string language = format.text("language");
    if (!language.empty() && language != "und") line.add(printable(language, 16));
    if (const auto* durationUs = format.find<int64_t>(host::kKeyDurationUs)) {
        line.add(durationText(*durationUs));
    }
    return line.take();
}

const char* pictureKind(const host::FormatBytes& bytes) {
    struct Magic {
        std::string_view bytes;
        const char* kind;
    };
    static constexpr Magic kMagics[] = {
            {"\xFF\xD8\xFF", "JPEG"}, {"\x89PNG", "PNG"},     {"BM", "BMP"},
            {"GIF8", "GIF"},          {{"II*\0", 4}, "TIFF"}, {{"MM\0*", 4}, "TIFF"}};
    for (const Magic& magic : kMagics) {
        if (bytes.size() >= magic.bytes.size() &&
            memcmp(bytes.data(), magic.bytes.data(), magic.bytes.size()) == 0) {
            return magic.kind;
        }
    }
    return "picture";
}

}  // namespace orvel::probe
