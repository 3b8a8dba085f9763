#include "collect/FileFacts.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace orvel::probe {
namespace {

constexpr size_t kMaxBoxes = 100000;
constexpr int64_t kMaxEdits = 1000;
constexpr int64_t kAudibleUs = 40000, kCutUs = 500000;
constexpr int kLowScore = 25;  // what the plug-in calls low

/** Fields of a file; 0 where the file ends. */
class Fields {
  public:
    explicit Fields(host::DataSource& file) : mFile(file) { file.getSize(&mSize); }
    int64_t size() const { return mSize; }
    std::string bytes(int64_t at, size_t count) {
        std::string text(count, '\0');
        mFile.readAt(at, text.data(), count);
        return text;
    }
    bool is(int64_t at, const char* type) { return bytes(at, 4) == type; }
    // Saturated: no file is so long.
    int64_t big(int64_t at, size_t count) { return number(bytes(at, count)); }
    int64_t little(int64_t at, size_t count) {
        const std::string text = bytes(at, count);
        return number({text.rbegin(), text.rend()});
    }

  private:
    static int64_t number(const std::string& text) {
        uint64_t value = 0;
        for (const char byte : text)
            value = value << 8 | static_cast<uint8_t>(byte);
        return static_cast<int64_t>(std::min<uint64_t>(value, INT64_MAX));
    }
    host::DataSource& mFile;
    off64_t mSize = 0;
};

using Visit = std::function<void(const std::string& type, int64_t body, int64_t end)>;

// The boxes of a range, headers only. Returns where the last one says to end.
int64_t forEachBox(Fields& fields, int64_t at, int64_t end, const Visit& visit) {
    for (size_t boxes = 0; at + 8 <= end && boxes < kMaxBoxes; boxes++) {
        int64_t size = fields.big(at, 4);
        const int64_t header = size == 1 ? 16 : 8;
        if (size == 1) size = fields.big(at + 8, 8);
        if (size == 0) size = end - at;
        if (size < header || size > INT64_MAX - at) return at;
        visit(fields.bytes(at + 4, 4), at + header, std::min(at + size, end));
        at += size;
    }
    return at;
}

bool isMp4(Fields& fields) {
    const std::string type = fields.bytes(4, 4);
    return std::string("ftyp moov mdat free skip wide").find(type) != std::string::npos;
}

// The number of EBML at `*at`, which goes past it. -1: unknown.
int64_t ebmlNumber(Fields& fields, int64_t* at) {
    size_t length = 1;
    for (int64_t first = fields.big(*at, 1); length < 8 && !(first & 0x80); first <<= 1)
        length++;
    const int64_t most = (int64_t{1} << (7 * length)) - 1, value = fields.big(*at, length) & most;
    *at += static_cast<int64_t>(length);
    return value == most ? -1 : value;
}

/** What the edit list of one track does. */
struct Edits {
    int stream = 0;
    bool isShown = false;  // audio or video
    int64_t pieces = 0, shiftUs = 0, keptUs = 0, mediaUs = 0;
    int64_t cutUs() const {
        return pieces > 0 ? std::max<int64_t>(mediaUs + shiftUs - keptUs, 0) : 0;
    }
};

int64_t toUs(int64_t units, int64_t timescale) {
    if (timescale <= 0) return 0;
    const double us = static_cast<double>(units) / static_cast<double>(timescale) * 1e6;
    return static_cast<int64_t>(std::min(us, 9e15));
}

// Of a movie or media header (8.2.2, 8.4.2).
int64_t timescaleOf(Fields& fields, int64_t header) {
    return fields.big(header + (fields.big(header, 1) == 1 ? 20 : 12), 4);
}

Edits readTrack(Fields& fields, int64_t body, int64_t end, int64_t movieScale) {
    Edits edits;
    int64_t scale = 0, list = 0;
    const Visit inside = [&](const std::string& type, int64_t at, int64_t limit) {
        if (type == "mdia" || type == "edts") forEachBox(fields, at, limit, inside);
        if (type == "elst") list = at;
        if (type == "hdlr") edits.isShown = fields.is(at + 8, "vide") || fields.is(at + 8, "soun");
        if (type != "mdhd") return;
        const bool wide = fields.big(at, 1) == 1;
        scale = timescaleOf(fields, at);
        edits.mediaUs = toUs(fields.big(at + (wide ? 24 : 16), wide ? 8 : 4), scale);
    };
    forEachBox(fields, body, end, inside);
    const int64_t width = fields.big(list, 1) == 1 ? 8 : 4;
    const int64_t count = list == 0 ? 0 : std::min(fields.big(list + 4, 4), kMaxEdits);
    for (int64_t i = 0; i < count; i++) {
        const int64_t at = list + 8 + i * (2 * width + 4);
        const int64_t us = toUs(fields.big(at, width), movieScale);
        if (fields.bytes(at + width, width) == std::string(width, '\xFF')) {  // nothing for so long
            edits.shiftUs += edits.pieces == 0 ? us : 0;
            continue;
        }
        if (edits.pieces++ == 0) edits.shiftUs -= toUs(fields.big(at + width, width), scale);
        edits.keptUs += us > 0 ? us : edits.mediaUs;  // no length: to the end
    }
    return edits;
}

}  // namespace

int64_t claimedBytes(host::DataSource& file) {
    constexpr int64_t kUnknown = INT32_MAX;  // what writers put that never came back, and more
    Fields fields(file);
    const int64_t riff = fields.little(4, 4), form = fields.big(4, 4);
    if (fields.is(0, "RIFF")) return riff < kUnknown && riff > 0 ? riff + 8 : -1;
    if (fields.is(0, "FORM")) return form < kUnknown && form > 0 ? form + 8 : -1;
    if (isMp4(fields)) return forEachBox(fields, 0, fields.size(), [](auto&&...) {});
    int64_t at = 4;
    if (fields.bytes(0, 4) != "\x1A\x45\xDF\xA3") return -1;
    const int64_t header = ebmlNumber(fields, &at);
    at += header;
    if (header < 0 || fields.bytes(at, 4) != "\x18\x53\x80\x67") return -1;
    at += 4;
    const int64_t segment = ebmlNumber(fields, &at);
    return segment < 0 ? -1 : at + segment;
}

Json editListsThatMatter(host::DataSource& file) {
    Fields fields(file);
    std::vector<Edits> tracks;
    int64_t movieScale = 0, leastUs = INT64_MAX, mostUs = INT64_MIN;
    int stream = 0;
    bool matters = false;
    const Visit inMovie = [&](const std::string& type, int64_t at, int64_t end) {
        if (type == "moov") forEachBox(fields, at, end, inMovie);
        if (type == "mvhd") movieScale = timescaleOf(fields, at);
        if (type != "trak") return;
        Edits edits = readTrack(fields, at, end, movieScale);
        edits.stream = stream++;
        if (!edits.isShown) return;
        tracks.push_back(edits);
        leastUs = std::min(leastUs, edits.shiftUs);
        mostUs = std::max(mostUs, edits.shiftUs);
        matters |= edits.pieces > 1 || edits.cutUs() > kCutUs || std::abs(edits.shiftUs) > kCutUs ||
                   mostUs - leastUs >= kAudibleUs;
    };
    if (isMp4(fields)) forEachBox(fields, 0, fields.size(), inMovie);
    Json lists = Json::array();
    for (const Edits& edits : tracks) {
        if (matters)
            lists.push_back({{"stream", edits.stream},
                             {"pieces", edits.pieces},
                             {"shiftUs", edits.shiftUs},
                             {"cutUs", edits.cutUs()}});
    }
    return lists;
}

std::string foreignFormat(host::DataSource& source) {
    std::vector<uint8_t> bytes((128 << 10) + AVPROBE_PADDING_SIZE);
    const ssize_t got = source.readAt(0, bytes.data(), bytes.size() - AVPROBE_PADDING_SIZE);
    if (got <= 0) return "";
    std::fill(bytes.begin() + got, bytes.end(), 0);
    AVProbeData probe{};
    probe.buf = bytes.data();
    probe.buf_size = static_cast<int>(got);
    probe.filename = "";
    int score = 0;
    const auto* format = av_probe_input_format3(&probe, 1, &score);
    return format && score > kLowScore ? format->long_name : "";
}

Json codecJson(int codecId) {
    const auto codec = static_cast<AVCodecID>(codecId);
    const AVMediaType type = avcodec_get_type(codec);
    const bool isShown = type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO;
    return {{"type", isShown ? av_get_media_type_string(type) : "other"},
            {"codec", avcodec_get_name(codec)}};
}

}  // namespace orvel::probe
