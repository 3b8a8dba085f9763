#pragma once

#include <media/NdkMediaErrorPriv.h>
#include <media/NdkMediaFormat.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include "base/OrvelMetaData.h"

namespace orvel {

// Fills the framework's format with what fill, a status_t(OrvelMetaData&), puts into a store made
// for the call. On any status but OK the framework's format stays as it was.
template <typename Fill>
media_status_t handOverFormat(AMediaFormat* format, Fill fill) {
    const android::sp<OrvelMetaData> meta = new OrvelMetaData;
    const android::status_t status = fill(*meta);
    if (status != android::OK) return translate_error(status);
    AMediaFormat_copy(format, meta->getHandle());
    return AMEDIA_OK;
}

}  // namespace orvel
