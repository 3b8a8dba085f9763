#pragma once

extern "C" {
#include <libavformat/avformat.h>
}

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/DataSource.h"

namespace orvel::test {

/** One sample: of the plug-in's, or what libavformat and the rules of conversion make of it. */
struct Sample {
    int64_t timeUs = 0;
    bool sync = false;
    std::vector<uint8_t> data;
};
bool operator==(const Sample& a, const Sample& b);
/** "timeUs=66667 sync size=61748 begins 000000016742", for messages. */
std::string describe(const Sample& sample);

struct OracleStream {
    AVMediaType type = AVMEDIA_TYPE_UNKNOWN;
    AVCodecID codec = AV_CODEC_ID_NONE;
    bool isAttachedPicture = false;
    std::vector<Sample> samples;  // as a track delivers them: converted
};

/**
 * What plain libavformat makes of a source: the same demuxer over an I/O context of its own, one
 * av_read_frame loop over the whole file, conversions written the simplest way.
 */
struct Oracle {
    /** avformat_open_input and avformat_find_stream_info went well. */
    bool opened = false;
    std::vector<OracleStream> streams;
    /** How a reader has to end: ERROR_END_OF_STREAM or ERROR_IO. */
    android::status_t end = 0;

    /** Which streams are delivered; the others are discarded, as a player's unstarted tracks are.
     */
    using Filter = std::function<bool(const AVStream&)>;
    static bool isAudioOrVideo(const AVStream& stream);
    static Oracle read(host::DataSource& source, const std::string& demuxer,
                       const Filter& filter = isAudioOrVideo);
};

/** Units behind big-endian lengths of `lengthSize` bytes, rewritten behind 00 00 00 01. */
std::vector<uint8_t> withStartCodes(const std::vector<uint8_t>& data, size_t lengthSize);
/** Samples of `bits` bits as a decoder gets them: 8 bits become 16, AIFF becomes little-endian. */
std::vector<uint8_t> asDeliveredPcm(const std::vector<uint8_t>& data, int bits, bool isAiff);

}  // namespace orvel::test
