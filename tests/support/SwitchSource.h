#pragma once

#include <atomic>

#include "framework/SourceDecorators.h"

namespace orvel::test {

/** One source at first, another after the switch: for sources that no plug-in would take. */
class SwitchSource final : public host::SourceDecorator {
  public:
    SwitchSource(host::DataSource& first, host::DataSource& second)
        : SourceDecorator(first), mSecond(second) {}
    void switchOver() { mSwitched = true; }

    ssize_t readAt(off64_t offset, void* data, size_t size) override {
        return mSwitched ? mSecond.readAt(offset, data, size) : inner().readAt(offset, data, size);
    }
    android::status_t getSize(off64_t* size) override {
        return mSwitched ? mSecond.getSize(size) : inner().getSize(size);
    }

  private:
    host::DataSource& mSecond;
    std::atomic<bool> mSwitched{false};
};

}  // namespace orvel::test
