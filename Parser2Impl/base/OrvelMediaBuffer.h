#pragma once

#include <stddef.h>

#include <map>
#include <memory>

#include <media/MediaExtractorPluginHelper.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include "OrvelMetaData.h"

namespace orvel {

// The plug-in's view of one buffer that the framework lends for one sample. Sizes, offsets and
// lengths are bytes. Virtual slots are in the order written here.
class IOrvelMediaBuffer {
  public:
    // Gives the buffer back to the framework's group, which may lend it again at once: nothing of
    // it may be touched afterwards. Only for a buffer that is not delivered; the framework itself
    // releases those that are.
    virtual void release() = 0;

    virtual void* data() const = 0;   // start of the buffer's memory, the framework's
    virtual size_t size() const = 0;  // capacity
    virtual size_t range_offset() const = 0;
    virtual size_t range_length() const = 0;
    virtual void set_range(size_t offset, size_t length) = 0;

    // The sample's metadata; lives as long as this object. What is set arrives in the framework
    // buffer's own format.
    virtual OrvelMetaData& meta_data() = 0;

    // The framework buffer behind this object; owned by the framework group's helper.
    virtual android::MediaBufferHelper* getBuffer() const = 0;

    virtual ~IOrvelMediaBuffer() = default;
};

// A framework buffer as IOrvelMediaBuffer. Destruction neither releases the framework's buffer nor
// deletes the helper.
class OrvelMediaBuffer final : public IOrvelMediaBuffer {
  public:
    explicit OrvelMediaBuffer(android::MediaBufferHelper* buffer);
    ~OrvelMediaBuffer() override;

    void release() override;
    void* data() const override;
    size_t size() const override;
    size_t range_offset() const override;
    size_t range_length() const override;
    void set_range(size_t offset, size_t length) override;
    OrvelMetaData& meta_data() override;
    android::MediaBufferHelper* getBuffer() const override;

  private:
    OrvelMediaBuffer(const OrvelMediaBuffer&) = delete;
    OrvelMediaBuffer& operator=(const OrvelMediaBuffer&) = delete;

    android::MediaBufferHelper* const mBuffer;   // the framework group helper's
    const android::sp<OrvelMetaData> mMetaData;  // borrows the framework buffer's format
};

// The buffer group of one track: hands out the framework's buffers as IOrvelMediaBuffer, always the
// same object for the same framework buffer. It owns those objects and nothing else; neither the
// framework's buffers nor the group's helper. It must be destroyed before that helper.
//
// No lock of its own: the callers of one group serialise their use of it (the packet reader holds
// its lock). The framework returns delivered buffers through its own handle, from any thread.
// Virtual slots are in the order written here.
class OrvelMediaBufferGroup {
  public:
    explicit OrvelMediaBufferGroup(android::MediaBufferGroupHelper* group);  // group: not owned
    virtual ~OrvelMediaBufferGroup();

    // The framework group's operations of the same names with the arguments unchanged.
    virtual bool init(size_t buffers, size_t bufferSize, size_t growthLimit);
    virtual void add_buffer(size_t size);

    // Lends one buffer of at least requestedSize bytes, as far as the framework's group grows,
    // with empty metadata. Waits for a free one unless nonBlocking. On an error *out is null and
    // the framework's status is returned. OK with a null *out: the framework gave no buffer.
    virtual android::status_t acquire_buffer(IOrvelMediaBuffer** out, bool nonBlocking,
                                             size_t requestedSize);

    virtual bool has_buffers();

  private:
    OrvelMediaBufferGroup(const OrvelMediaBufferGroup&) = delete;
    OrvelMediaBufferGroup& operator=(const OrvelMediaBufferGroup&) = delete;

    android::MediaBufferGroupHelper* const mGroup;  // the track adapter's
    std::map<android::MediaBufferHelper*, std::unique_ptr<OrvelMediaBuffer>> mWrappers;
};

}  // namespace orvel
