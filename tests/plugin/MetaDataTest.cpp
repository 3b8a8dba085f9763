// The metadata store against the platform's format: each type, and what is not in the tables.
#include <gtest/gtest.h>
#include <string.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "OrvelMetaData.h"

namespace orvel {
namespace {

using test::Lines;

uint32_t code(const std::string& text) {
    uint32_t value = 0;
    for (unsigned char character : text)
        value = value * 256 + character;
    return value;
}

// One key for each type; those of one name lead to one entry. The page of the format keys has the
// others.
TEST(MetaData, EntryOfEveryType_IsTheFrameworksUnderItsName) {
    OrvelMetaData meta;
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
    OrvelMetaData meta;
    int32_t int32 = 5;
    int64_t int64 = 5;
    float number = 5;
    const char* text = "preset";
    void* pointer = &meta;
    const void* data = &meta;
    size_t size = 5;
    uint32_t type = 5;
    const uint32_t mime = code("mime");
    const struct {
        const char* line;
        std::function<bool()> call;
    } cases[] = {
            {"W String 0x616c414d", [&] { return meta.setCString(code("alAM"), "image/png"); }},
            {"W Int32 0x74696d65", [&] { return meta.setInt32(code("time"), 1); }},
            {"W Int32 0x64666c74", [&] { return meta.setInt32(code("dflt"), 0); }},
            {"W Int64 0x696e7053", [&] { return meta.setInt64(code("inpS"), 1); }},
            {"W Float 0x66726d52", [&] { return meta.setFloat(code("frmR"), 1); }},
            {"W Pointer 0x6d696d65", [&] { return meta.setPointer(mime, &meta); }},
            {"W Rect 0x62666770", [&] { return meta.setRect(code("bfgp"), 1, 2, 3, 4); }},
            {"I Data 0x6d696d65", [&] { return meta.setData(mime, 0, "x", 1); }},
            {"w CString 0x63736430", [&] { return meta.findCString(code("csd0"), &text); }},
            {"w Int32 0x73796e63", [&] { return meta.findInt32(code("sync"), &int32); }},
            {"w Int64 0", [&] { return meta.findInt64(0, &int64); }},
            {"w Float 0xffffffff", [&] { return meta.findFloat(UINT32_MAX, &number); }},
            {"w Pointer 0x6d696d65", [&] { return meta.findPointer(mime, &pointer); }},
            {"w Rect 0x6d696d65",
             [&] { return meta.findRect(mime, &int32, &int32, &int32, &int32); }},
            {"i Data 0x6d696d65", [&] { return meta.findData(mime, &type, &data, &size); }},
    };
    const std::string empty = meta.toString().string();
    for (const auto& test : cases) {  // in small letters: a find operation
        std::istringstream words(test.line);
        std::string priority, operation, key;
        words >> priority >> operation >> key;
        const bool isFind = islower(priority[0]) != 0;
        priority[0] = static_cast<char>(toupper(priority[0]));
        EXPECT_FALSE(test.call()) << test.line;
        EXPECT_EQ(log.take("Parser2Creater"),
                  Lines{priority + " Parser2Creater: Can't " + (isFind ? "find" : "set") +
                        operation + " when  key is " + key});
    }
    EXPECT_EQ(meta.toString().string(), empty);
    EXPECT_TRUE(int32 == 5 && int64 == 5 && number == 5 && pointer == &meta && data == &meta &&
                size == 5 && type == 5 && strcmp(text, "preset") == 0);
    meta.setCString(mime, "audio/test");
    meta.dumpToLog();
    const std::string dump = AMediaFormat_toString(meta.getHandle());
    EXPECT_TRUE(dump != empty && dump == meta.toString().string());
    EXPECT_EQ(log.take("Parser2Creater"), Lines{"I Parser2Creater: dumpToLog: " + dump});
}

TEST(MetaData, FlagKeys_AreNormalisedWhenSet) {
    const struct {
        uint32_t key;
        int32_t set;
        const char* name;
        int32_t stored;
    } cases[] = {{kKeyIsSyncFrame, 7, "is-sync-frame", 1},
                 {kKeyIsSyncFrame, 0, "is-sync-frame", 0},
                 {kKeyIsSyncFrame, INT32_MIN, "is-sync-frame", 1},
                 {kKeyIsDefault, 3, "is-default", 1},
                 {kKeyIsDefault, 0, "is-default", 1}};  // refused: the entry stays
    OrvelMetaData meta;
    for (const auto& test : cases) {
        int32_t value = -1;
        EXPECT_EQ(meta.setInt32(test.key, test.set), test.key != kKeyIsDefault || test.set != 0);
        EXPECT_TRUE(AMediaFormat_getInt32(meta.getHandle(), test.name, &value));
        EXPECT_EQ(value, test.stored) << test.name << " " << test.set;
    }
}

TEST(MetaData, CopyAndClear_ConcernTheFormatAlone) {
    OrvelMetaData meta;
    int target = 0;
    void* pointer = &meta;
    int32_t width = 0;
    meta.setPointer(kKeyBufferGroup, &target);
    meta.setInt32(kKeyWidth, 1920);
    {
        OrvelMetaData copy(meta);
        EXPECT_TRUE(copy.findInt32(kKeyWidth, &width) && width == 1920);
        EXPECT_TRUE(copy.findPointer(kKeyBufferGroup, &pointer) && pointer == &meta);  // none
        copy.setInt32(kKeyWidth, 1);
        copy.setPointer(kKeyBufferGroup, &copy);
    }
    meta.copyEntriesFrom(meta);
    EXPECT_TRUE(meta.findInt32(kKeyWidth, &width) && width == 1920);
    meta.clear();
    width = 42;
    EXPECT_TRUE(meta.findInt32(kKeyWidth, &width) && width == 42);  // none: the preset stays
    EXPECT_TRUE(meta.findPointer(kKeyBufferGroup, &pointer) && pointer == &target);
}

}  // namespace
}  // namespace orvel
