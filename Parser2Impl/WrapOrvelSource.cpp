#define LOG_TAG "OrvelExtractor2"
#include "WrapOrvelSource.h"

#include <media/NdkMediaErrorPriv.h>
#include <media/stagefright/foundation/ADebug.h>

#include "FormatHandOver.h"

namespace orvel {

using android::OK;
using android::sp;
using android::status_t;

WrapOrvelSource::WrapOrvelSource(const sp<OrvelSource2>& source) : mSource(source) {}

WrapOrvelSource::~WrapOrvelSource() = default;

media_status_t WrapOrvelSource::start() {
    const sp<OrvelMetaData> params = new OrvelMetaData;
    params->setPointer(kKeyBufferGroup, bufferGroupOf(this, 0));
    return translate_error(mSource->start(params));
}

media_status_t WrapOrvelSource::stop() {
    return translate_error(mSource->stop());
}

media_status_t WrapOrvelSource::getFormat(AMediaFormat* format) {
    return handOverFormat(format, [&](OrvelMetaData& store) { return mSource->getFormat(store); });
}

media_status_t WrapOrvelSource::read(android::MediaBufferHelper** buffer,
                                     const ReadOptions* options) {
    IOrvelMediaBuffer* orvelBuffer = nullptr;
    const status_t status = mSource->read(&orvelBuffer, options);
    if (status != OK) return translate_error(status);
    CHECK(orvelBuffer != nullptr);
    *buffer = orvelBuffer->getBuffer();
    return AMEDIA_OK;
}

}  // namespace orvel
