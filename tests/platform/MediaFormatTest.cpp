#include <media/NdkMediaFormat.h>

#include <memory>

#include "TestSupport.h"

namespace {

using Format = std::unique_ptr<AMediaFormat, media_status_t (*)(AMediaFormat*)>;

Format newFormat() {
    return Format(AMediaFormat_new(), AMediaFormat_delete);
}

std::string text(const Format& format) {
    return AMediaFormat_toString(format.get());
}

// A bit for each type whose getter finds the name, in the order of kWrites.
int typesFound(const Format& format, const char* name) {
    AMediaFormat* f = format.get();
    int32_t i[4];
    int64_t i64;
    float f32;
    double f64;
    size_t size;
    const char* string;
    void* data;
    return AMediaFormat_getInt32(f, name, i) | AMediaFormat_getInt64(f, name, &i64) << 1 |
           AMediaFormat_getFloat(f, name, &f32) << 2 | AMediaFormat_getDouble(f, name, &f64) << 3 |
           AMediaFormat_getSize(f, name, &size) << 4 |
           AMediaFormat_getString(f, name, &string) << 5 |
           AMediaFormat_getBuffer(f, name, &data, &size) << 6 |
           AMediaFormat_getRect(f, name, &i[0], &i[1], &i[2], &i[3]) << 7;
}

const struct {
    void (*set)(AMediaFormat*);
    const char* text;
} kWrites[] = {
        {[](AMediaFormat* f) { AMediaFormat_setInt32(f, "k", -5); }, "k: int32(-5)"},
        {[](AMediaFormat* f) { AMediaFormat_setInt64(f, "k", int64_t{1} << 40); },
         "k: int64(1099511627776)"},
        {[](AMediaFormat* f) { AMediaFormat_setFloat(f, "k", 1.5f); }, "k: float(1.500000)"},
        {[](AMediaFormat* f) { AMediaFormat_setDouble(f, "k", -0.25); }, "k: double(-0.250000)"},
        {[](AMediaFormat* f) { AMediaFormat_setSize(f, "k", 9); }, "k: size_t(9)"},
        {[](AMediaFormat* f) { AMediaFormat_setString(f, "k", "abc"); }, "k: string(abc)"},
        {[](AMediaFormat* f) { AMediaFormat_setBuffer(f, "k", "\0\1", 2); }, "k: data(2 bytes)"},
        {[](AMediaFormat* f) { AMediaFormat_setRect(f, "k", 1, 2, 3, -4); },
         "k: Rect(1, 2, 3, -4)"},
};

}  // namespace

TEST(MediaFormat, LastWriteWins_AndOnlyItsOwnTypeIsFound) {
    Format format = newFormat();
    constexpr int kTypes = std::size(kWrites);
    for (int before = 0; before < kTypes; ++before) {
        for (int after = 0; after < kTypes; ++after) {
            kWrites[before].set(format.get());
            kWrites[after].set(format.get());
            EXPECT_EQ(typesFound(format, "k"), 1 << after);
            EXPECT_EQ(text(format), kWrites[after].text);
        }
    }
    EXPECT_EQ(typesFound(format, "K"), 0);
    AMediaFormat_clear(format.get());
    EXPECT_EQ(typesFound(format, "k"), 0);
    EXPECT_EQ(text(format), "");
}

TEST(MediaFormat, StringsAndBuffers_AreOwnCopiesThatStayPut) {
    Format format = newFormat();
    char source[] = "mp3";
    AMediaFormat_setString(format.get(), "mime", source);
    AMediaFormat_setBuffer(format.get(), "empty", nullptr, 0);
    source[0] = 'X';
    const char* mime = nullptr;
    ASSERT_TRUE(AMediaFormat_getString(format.get(), "mime", &mime));
    for (int i = 0; i < 200; ++i) {
        AMediaFormat_setInt32(format.get(), ("key" + std::to_string(i)).c_str(), i);
    }
    EXPECT_STREQ(mime, "mp3");
    void* data = nullptr;
    size_t size = 1;
    EXPECT_TRUE(AMediaFormat_getBuffer(format.get(), "empty", &data, &size));
    EXPECT_EQ(size, 0u);
    // Part of the old value given as the new one.
    AMediaFormat_setString(format.get(), "mime", mime + 1);
    ASSERT_TRUE(AMediaFormat_getString(format.get(), "mime", &mime));
    EXPECT_STREQ(mime, "p3");

    LogCapture log;
    AMediaFormat_setString(format.get(), "mime", nullptr);
    AMediaFormat_setBuffer(format.get(), "mime", nullptr, 1);
    EXPECT_EQ(log.take().size(), 2u);
    EXPECT_EQ(typesFound(format, "mime"), 1 << 5);
}

TEST(MediaFormat, Copy_ReplacesEverythingInTheTarget) {
    Format from = newFormat();
    Format to = newFormat();
    for (const auto& write : kWrites) {
        write.set(from.get());
        AMediaFormat_setInt32(to.get(), "old", 1);
        EXPECT_EQ(AMediaFormat_copy(to.get(), from.get()), AMEDIA_OK);
        EXPECT_EQ(text(to), write.text);
    }
    AMediaFormat_copy(to.get(), to.get());
    EXPECT_EQ(text(to), "");
}

TEST(MediaFormat, ManyNamesOverTime_AreKeptApart) {
    Format format = newFormat();
    for (int round = 0; round < 30; ++round) {
        AMediaFormat_clear(format.get());
        std::string expected;
        for (int i = 10; i < 20; ++i) {
            std::string name = "r" + std::to_string(round) + "-" + std::to_string(i);
            AMediaFormat_setInt32(format.get(), name.c_str(), i);
            expected +=
                    (expected.empty() ? "" : ", ") + name + ": int32(" + std::to_string(i) + ")";
        }
        ASSERT_EQ(text(format), expected);
    }
}

TEST(MediaFormat, ClearedAndFilledPerSample_DoesNotAllocate) {
    if (!allocationsAreCounted()) GTEST_SKIP() << "a sanitizer owns the allocator";
    Format store = newFormat();
    Format framework = newFormat();
    size_t before = 0;
    for (int sample = 0; sample < 100; ++sample) {
        if (sample == 2) before = allocationCount();
        AMediaFormat_clear(store.get());
        AMediaFormat_setInt64(store.get(), "timeUs", sample * 40000);
        AMediaFormat_setInt32(store.get(), "is-sync-frame", sample % 2);
        if (sample % 2 == 0) AMediaFormat_setInt64(store.get(), "target-time", sample);
        AMediaFormat_setString(store.get(), "mime-of-a-length-beyond-inline",
                               "audio/x-of-a-length");
        AMediaFormat_setBuffer(store.get(), "sei", "0123456789012345678901234567890123456789", 40);
        AMediaFormat_copy(framework.get(), store.get());
    }
    EXPECT_EQ(allocationCount(), before);
}
