// The metadata store against the platform's format: keys of every table, and what is not in the
// tables.
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

// "key=name" pairs, '_' for a blank in a key.
std::vector<std::pair<uint32_t, std::string>> pairs(const char* list) {
    std::vector<std::pair<uint32_t, std::string>> result;
    std::istringstream stream(list);
    for (std::string word; stream >> word;) {
        std::string key = word.substr(0, 4);
        if (key[3] == '_') key[3] = ' ';
        result.emplace_back(code(key), word.substr(5));
    }
    return result;
}

// Keys of every table; the page of all keys, made from the tables, is compared elsewhere. Some have
// a blank, some lead to the same name.
constexpr char kTexts[] = "albu=album loc_=location mime=mime ffmt=file-format";
constexpr char kInt64s[] = "exof=exif-offset time=timeUs dura=durationUs";
constexpr char kInt32s[] =
        "autL=loop #chn=channel-count bits=bits-per-sample sbit=bits-per-sample "
        "adif=aac-format-adif aacp=aac-format-adif mifs=min-frame-size mafs=max-frame-size";
constexpr char kBytes[] = "albA=albumart prof=icc-profile sei_=sei csd0=csd-0 csd1=csd-1";

TEST(MetaData, Keys_WriteAndReadTheFrameworkEntryOfTheirName) {
    OrvelMetaData meta;
    AMediaFormat* format = meta.getHandle();
    int32_t number = 100;
    for (const auto& [key, name] : pairs(kTexts)) {
        const char *written = "", *found = "";
        EXPECT_TRUE(meta.setCString(key, ("<" + name).c_str()) && meta.findCString(key, &found));
        EXPECT_TRUE(AMediaFormat_getString(format, name.c_str(), &written)) << name;
        EXPECT_TRUE("<" + name == written && "<" + name == found) << name;
    }
    for (const auto& [key, name] : pairs(kInt64s)) {
        const int64_t value = ++number * (int64_t{1} << 40);
        int64_t written = 0, found = 0;
        EXPECT_TRUE(meta.setInt64(key, value) && meta.findInt64(key, &found));
        EXPECT_TRUE(AMediaFormat_getInt64(format, name.c_str(), &written)) << name;
        EXPECT_TRUE(value == written && value == found) << name;
    }
    for (const auto& [key, name] : pairs(kInt32s)) {
        const int32_t value = -++number;
        int32_t written = 0, found = 0;
        EXPECT_TRUE(meta.setInt32(key, value) && meta.findInt32(key, &found));
        EXPECT_TRUE(AMediaFormat_getInt32(format, name.c_str(), &written)) << name;
        EXPECT_TRUE(value == written && value == found) << name;
    }
    for (const auto& [key, name] : pairs(kBytes)) {
        void* written = nullptr;
        const void* found = nullptr;
        size_t writtenSize = 0, foundSize = 0;
        uint32_t type = 77;
        EXPECT_TRUE(meta.setData(key, ++number, name.data(), name.size()));
        EXPECT_TRUE(AMediaFormat_getBuffer(format, name.c_str(), &written, &writtenSize)) << name;
        EXPECT_TRUE(meta.findData(key, &type, &found, &foundSize));
        EXPECT_TRUE(writtenSize == name.size() && memcmp(written, name.data(), writtenSize) == 0);
        EXPECT_TRUE(found == written && foundSize == writtenSize && type == 77) << name;
    }
    float rate = 0, foundRate = 0;
    EXPECT_TRUE(meta.setFloat(code("capF"), 29.97f) && meta.findFloat(code("capF"), &foundRate));
    EXPECT_TRUE(AMediaFormat_getFloat(format, "capture-rate", &rate));
    EXPECT_TRUE(rate == 29.97f && foundRate == 29.97f);
    int32_t written[4] = {}, found[4] = {};
    EXPECT_TRUE(meta.setRect(code("crop"), 1, 2, 3, 4));
    EXPECT_TRUE(meta.findRect(code("crop"), &found[0], &found[1], &found[2], &found[3]));
    EXPECT_FALSE(meta.remove(code("crop")) || meta.hasData(code("csd0")));
    EXPECT_TRUE(AMediaFormat_getRect(format, "crop", &written[0], &written[1], &written[2],
                                     &written[3]));
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(written[i] == i + 1 && found[i] == i + 1);
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
