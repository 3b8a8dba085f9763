#include <media/stagefright/foundation/ABuffer.h>
#include <stdlib.h>

namespace android {

ABuffer::ABuffer(size_t capacity)
    : mData(static_cast<uint8_t*>(malloc(capacity))), mCapacity(mData != nullptr ? capacity : 0) {}

ABuffer::~ABuffer() {
    free(mData);
}

}  // namespace android
