#include <media/stagefright/foundation/ALooper.h>

#include "LooperCore.h"
#include "LooperRoster.h"

namespace android {

ALooper::ALooper() : mCore(new LooperCore) {}

ALooper::~ALooper() {
    stop();
    LooperRoster::instance().forgetLooper(this);
}

void ALooper::setName(const char* name) {
    mName = name;
}

ALooper::handler_id ALooper::registerHandler(const sp<AHandler>& handler) {
    return LooperRoster::instance().registerHandler(this, handler);
}

void ALooper::unregisterHandler(handler_id handlerId) {
    LooperRoster::instance().unregisterHandler(handlerId);
}

status_t ALooper::start() {
    return mCore->start(mName);
}

status_t ALooper::stop() {
    return mCore->stop();
}

AHandler::AHandler() = default;

AHandler::~AHandler() {
    LooperRoster::instance().forgetHandler(id());
}

}  // namespace android
