// The metadata store against the platform's format: each type, and what is not in the tables.
#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "base/OrvelMetaData.h"

namespace orvel {
namespace {

using android::sp;
using test::Lines;

uint32_t code(const std::string& text) {
    uint32_t value = 0;
    for (char character : text)
        value = value * 256 + static_cast<unsigned char>(character);
    return value;
}

// One key for each type; those of one name lead to one entry. The page of the format keys has the
// others.
TEST(MetaData, EntryOfEveryType_IsTheFrameworksUnderItsName) {
    const sp<OrvelMetaData> store = new OrvelMetaData;
    OrvelMetaData& meta = *store;
    const char* text = "";
    int64_t int64 = 0;
    int32_t int32 = 0;
    float number = 0;
    uint32_t type = 77;
    const void* data = nullptr;
    size_t size = 0;
    int32_t rect[4] = {};
    EXPECT_TRUE(meta.setCString(code("loc "), "+48+2/") && meta.findCString(code("loc "), &text));
    EXPECT_TRUE(meta.setInt64(code("time"), int64_t{1} << 40));
    EXPECT_TRUE(meta.findInt64(code("time"), &int64));
    EXPECT_TRUE(meta.setInt32(code("#chn"), -2) && meta.findInt32(code("#chn"), &int32));
    EXPECT_TRUE(meta.setInt32(code("bits"), 16) && meta.setInt32(code("sbit"), 24));
    EXPECT_TRUE(meta.setInt32(code("adif"), 1) && meta.setInt32(code("aacp"), 2));
    EXPECT_TRUE(meta.setFloat(code("capF"), 29.97f) && meta.findFloat(code("capF"), &number));
    EXPECT_TRUE(meta.setData(code("sei "), 5, "abc", 3));
    EXPECT_TRUE(meta.findData(code("sei "), &type, &data, &size));
    EXPECT_TRUE(meta.setRect(code("crop"), 1, 2, 3, 4));
    EXPECT_TRUE(meta.findRect(code("crop"), &rect[0], &rect[1], &rect[2], &rect[3]));
    EXPECT_FALSE(meta.remove(code("crop")) || meta.hasData(code("csd0")));
    EXPECT_STREQ(AMediaFormat_toString(meta.getHandle()),
                 "aac-format-adif: int32(2), bits-per-sample: int32(24), "
                 "capture-rate: float(29.969999), channel-count: int32(-2), "
                 "crop: Rect(1, 2, 3, 4), location: string(+48+2/), sei: data(3 bytes), "
                 "timeUs: int64(1099511627776)");
    EXPECT_TRUE(std::string(text) == "+48+2/" && int64 == int64_t{1} << 40 && int32 == -2);
    EXPECT_TRUE(number == 29.97f && type == 77 && size == 3 && memcmp(data, "abc", 3) == 0);
    EXPECT_EQ(std::vector<int32_t>(rect, rect + 4), (std::vector<int32_t>{1, 2, 3, 4}));
}

TEST(MetaData, UnknownKey_IsRefusedWithOneLineAndNothingStored) {
    test::LogCapture log;
    const sp<OrvelMetaData> store = new OrvelMetaData;
    OrvelMetaData& meta = *store;
    int32_t int32 = 5;
    void* pointer = &meta;
    const void* data = &meta;
    size_t size = 5;
    uint32_t type = 5;
    const uint32_t mime = code("mime");
    // Each is a key of another type.
    EXPECT_FALSE(meta.setCString(code("alAM"), "image/png") || meta.setInt32(code("time"), 1) ||
                 meta.setInt32(code("dflt"), 0) || meta.setInt64(code("inpS"), 1) ||
                 meta.setFloat(code("frmR"), 1) || meta.setPointer(mime, &meta) ||
                 meta.setRect(code("bfgp"), 1, 2, 3, 4) || meta.setData(mime, 0, "x", 1));
    EXPECT_EQ(log.take("Parser2Creater").size(), 8u);
    EXPECT_FALSE(meta.findInt32(code("sync"), &int32) || meta.findPointer(mime, &pointer) ||
                 meta.findRect(mime, &int32, &int32, &int32, &int32));
    EXPECT_EQ(log.take("Parser2Creater").back(),
              "W Parser2Creater: Can't findRect when  key is 0x6d696d65");
    EXPECT_FALSE(meta.findData(mime, &type, &data, &size));
    EXPECT_EQ(log.take("Parser2Creater"),
              Lines{"I Parser2Creater: Can't findData when  key is 0x6d696d65"});
    EXPECT_STREQ(AMediaFormat_toString(meta.getHandle()), "");
    EXPECT_TRUE(int32 == 5 && pointer == &meta && data == &meta && size == 5 && type == 5);
}

TEST(MetaData, FlagKeys_AreNormalisedWhenSet) {
    const sp<OrvelMetaData> store = new OrvelMetaData;
    for (int32_t flag : {7, 0, INT32_MIN}) {
        int32_t value = -1;
        EXPECT_TRUE(store->setInt32(kKeyIsSyncFrame, flag));
        EXPECT_TRUE(AMediaFormat_getInt32(store->getHandle(), "is-sync-frame", &value));
        EXPECT_EQ(value, flag != 0 ? 1 : 0);
    }
    EXPECT_TRUE(store->setInt32(kKeyIsDefault, 3));
    EXPECT_FALSE(store->setInt32(kKeyIsDefault, 0));  // the entry stays
    EXPECT_STREQ(AMediaFormat_toString(store->getHandle()),
                 "is-default: int32(1), is-sync-frame: int32(1)");
}

TEST(MetaData, CopyAndClear_ConcernTheFormatAlone) {
    const sp<OrvelMetaData> store = new OrvelMetaData;
    OrvelMetaData& meta = *store;
    int target = 0;
    void* pointer = &meta;
    int32_t width = 0;
    meta.setPointer(kKeyBufferGroup, &target);
    meta.setInt32(kKeyWidth, 1920);
    const sp<OrvelMetaData> copy = new OrvelMetaData(meta);
    EXPECT_TRUE(copy->findInt32(kKeyWidth, &width) && width == 1920);
    EXPECT_TRUE(copy->findPointer(kKeyBufferGroup, &pointer) && pointer == &meta);  // none
    copy->setInt32(kKeyWidth, 1);
    copy->setPointer(kKeyBufferGroup, &target + 1);
    meta.copyEntriesFrom(meta);
    EXPECT_TRUE(meta.findInt32(kKeyWidth, &width) && width == 1920);
    meta.clear();
    width = 42;
    EXPECT_TRUE(meta.findInt32(kKeyWidth, &width) && width == 42);  // none: the preset stays
    EXPECT_TRUE(meta.findPointer(kKeyBufferGroup, &pointer) && pointer == &target);
}

}  // namespace
}  // namespace orvel
