#pragma once

#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvel::probe {

/** A codec that the plug-in promises to deliver, and under which MIME type. */
struct CodecRow {
    AVCodecID codec;
    const char* mime;
};

/** Of several rows of a MIME type the first is the usual one. */
const std::vector<CodecRow>& codecRows();

}  // namespace orvel::probe
