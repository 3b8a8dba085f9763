// The order of the virtual operations, which the platform's code may call by slot.
#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "OrvelExtractor2.h"
#include "OrvelSource2.h"
#include "base/OrvelDataSource.h"
#include "base/OrvelMediaBuffer.h"
#include "base/OrvelMetaData.h"

namespace orvel {
namespace {

// The slot of a virtual operation in its class's table (Itanium C++ ABI, 2.3 Member Function
// Pointers: one plus the offset in bytes; on Arm the one is elsewhere, IHI 0059, 3.2.1).
template <typename Operation>
ptrdiff_t slotOf(Operation operation) {
    uintptr_t value;
    static_assert(sizeof(operation) == 2 * sizeof(value));
    memcpy(&value, &operation, sizeof(value));
    return static_cast<ptrdiff_t>((value & ~uintptr_t{1}) / sizeof(void*));
}

// Its first operation has the first slot behind those of RefBase, the destructor's included.
struct PlainObject : android::RefBase {
    virtual void first() {}
};

template <typename First, typename... Others>
void expectInOrder(First first, Others... others) {
    ptrdiff_t expected = slotOf(first);
    for (const ptrdiff_t slot : {slotOf(others)...})
        EXPECT_EQ(slot, ++expected);
}

TEST(SlotOrder, VirtualOperations_StandInTheirFixedOrder) {
    EXPECT_EQ(slotOf(&IOrvelMediaBuffer::release), 0);
    using Buffer = IOrvelMediaBuffer;
    expectInOrder(&Buffer::release, &Buffer::data, &Buffer::size, &Buffer::range_offset,
                  &Buffer::range_length, &Buffer::set_range, &Buffer::meta_data,
                  &Buffer::getBuffer);
    using Group = OrvelMediaBufferGroup;
    EXPECT_EQ(slotOf(&Group::init), 2);  // the destructor's two come first
    expectInOrder(&Group::init, &Group::add_buffer, &Group::acquire_buffer, &Group::has_buffers);
    const ptrdiff_t behindRefBase = slotOf(&PlainObject::first);
    EXPECT_GE(behindRefBase, 2);
    for (const ptrdiff_t slot :
         {slotOf(&OrvelMetaData::clear), slotOf(&OrvelDataSource::readAt),
          slotOf(&OrvelExtractor2::countTracks), slotOf(&OrvelSource2::start)}) {
        EXPECT_EQ(slot, behindRefBase);
    }
    using Meta = OrvelMetaData;
    expectInOrder(&Meta::clear, &Meta::remove, &Meta::setCString, &Meta::setInt32, &Meta::setInt64,
                  &Meta::setFloat, &Meta::setPointer, &Meta::setRect, &Meta::findCString,
                  &Meta::findInt32, &Meta::findInt64, &Meta::findFloat, &Meta::findPointer,
                  &Meta::findRect, &Meta::setData, &Meta::findData, &Meta::hasData, &Meta::toString,
                  &Meta::dumpToLog, &Meta::getHandle);
    using Source = OrvelDataSource;
    expectInOrder(&Source::readAt, &Source::getSize, &Source::flags, &Source::getUri);
    using Extractor = OrvelExtractor2;
    expectInOrder(&Extractor::countTracks, &Extractor::getTrack, &Extractor::getTrackMetaData,
                  &Extractor::getMetaData, &Extractor::name);
    using Track = OrvelSource2;
    expectInOrder(&Track::start, &Track::stop, &Track::getFormat, &Track::read);
}

}  // namespace
}  // namespace orvel
