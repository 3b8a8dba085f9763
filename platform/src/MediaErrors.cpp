#define LOG_TAG "NdkMediaError"

#include <log/log.h>
#include <media/NdkMediaErrorPriv.h>
#include <media/stagefright/MediaErrors.h>

using namespace android;

namespace {

struct Pair {
    status_t status;
    media_status_t media;
};

constexpr Pair kPairs[] = {
        {OK, AMEDIA_OK},
        {ERROR_END_OF_STREAM, AMEDIA_ERROR_END_OF_STREAM},
        {ERROR_IO, AMEDIA_ERROR_IO},
        {ERROR_MALFORMED, AMEDIA_ERROR_MALFORMED},
        {INVALID_OPERATION, AMEDIA_ERROR_INVALID_OPERATION},
        {UNKNOWN_ERROR, AMEDIA_ERROR_UNKNOWN},
};

}  // namespace

media_status_t translate_error(status_t status) {
    for (const Pair& pair : kPairs) {
        if (pair.status == status) return pair.media;
    }
    ALOGE("sf error code: %d", status);
    return AMEDIA_ERROR_UNKNOWN;
}

status_t reverse_translate_error(media_status_t status) {
    if (status == AMEDIA_ERROR_WOULD_BLOCK) return WOULD_BLOCK;
    for (const Pair& pair : kPairs) {
        if (pair.media == status) return pair.status;
    }
    ALOGE("media error code: %d", status);
    return UNKNOWN_ERROR;
}
