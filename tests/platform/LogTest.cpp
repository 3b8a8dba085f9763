#include <cutils/properties.h>
#include <errno.h>
#include <log/log.h>
#include <media/OrvelMediaLog.h>
#include <media/stagefright/foundation/ADebug.h>
#include <stdlib.h>

#include <thread>

#include "TestSupport.h"

using namespace android;

namespace {

struct Stderr {
    explicit Stderr(int level) {
        standin::setLogLevel(level);
        testing::internal::CaptureStderr();
    }
    std::string take() {
        standin::setLogLevel(ANDROID_LOG_SILENT);
        return testing::internal::GetCapturedStderr();
    }
};

void ffmpegMessage(int level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    OrvelMediaLog::OrvelMediaLogCallback(nullptr, level, format, arguments);
    va_end(arguments);
}

}  // namespace

TEST(Log, HookSeesEveryPriority_StderrOnlyThoseOfTheLevel) {
    LogCapture log;
    Stderr silent(ANDROID_LOG_SILENT);
    __android_log_print(ANDROID_LOG_VERBOSE, "Tag", "%d", 1);
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "%s", "two");
    EXPECT_EQ(silent.take(), "");
    auto lines = log.take();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].priority, ANDROID_LOG_VERBOSE);
    EXPECT_EQ(lines[0].tag + lines[0].text + lines[1].tag + lines[1].text, "Tag1two");

    Stderr warnings(ANDROID_LOG_WARN);
    __android_log_print(ANDROID_LOG_INFO, "FFmpegIO", "unseen");
    __android_log_print(ANDROID_LOG_WARN, "FFmpegIO", "a\nb\n");
    __android_log_print(ANDROID_LOG_ERROR, "Parser2Creater", "%s", "");
    EXPECT_EQ(warnings.take(), "W FFmpegIO: a\nW FFmpegIO: b\nE Parser2Creater: \n");
}

TEST(Log, LineThatNobodyWants_IsRefused) {
    EXPECT_EQ(__android_log_print(ANDROID_LOG_ERROR, "Tag", "%d", 1), -EPERM);
    EXPECT_EQ(__android_log_write(ANDROID_LOG_ERROR, "Tag", "text"), -EPERM);
}

TEST(Log, LongTexts_AreCut) {
    LogCapture log;
    const std::string text(10000, 'x');
    EXPECT_EQ(__android_log_print(ANDROID_LOG_INFO, "Tag", "%s", text.c_str()), 1023);
    EXPECT_EQ(__android_log_write(ANDROID_LOG_INFO, "Tag", text.c_str()), 4000);
    auto lines = log.take();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text.size(), 1023u);
    EXPECT_EQ(lines[1].text.size(), 4000u);
}

TEST(Log, HookThatLogs_IsNotCalledForItsOwnLines) {
    std::atomic<int> calls{0};
    standin::setLogHook(
            [](void* cookie, int, const char*, const char*) {
                static_cast<std::atomic<int>*>(cookie)->fetch_add(1);
                __android_log_write(ANDROID_LOG_INFO, "Hook", "again");
            },
            &calls);
    __android_log_write(ANDROID_LOG_INFO, "Tag", "once");
    standin::setLogHook(nullptr, nullptr);
    EXPECT_EQ(calls.load(), 1);
}

TEST(Log, RemovedHook_IsNotRunningAnyMore) {
    struct Cookie {
        int calls = 0;
        bool removed = false;
    };
    std::atomic<bool> stop{false};
    std::thread logger([&] {
        while (!stop.load())
            __android_log_write(ANDROID_LOG_INFO, "Tag", "text");
    });
    for (int round = 0; round < 500; ++round) {
        Cookie cookie;  // not atomic: a call that is still running would be a race
        standin::setLogHook(
                [](void* data, int, const char*, const char*) {
                    auto* cookie = static_cast<Cookie*>(data);
                    EXPECT_FALSE(cookie->removed);
                    ++cookie->calls;
                },
                &cookie);
        std::this_thread::yield();
        standin::setLogHook(nullptr, nullptr);
        cookie.removed = true;
    }
    stop = true;
    logger.join();
}

TEST(Log, LinesOfSeveralThreads_StayWhole) {
    Stderr all(ANDROID_LOG_VERBOSE);
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([t] {
            const std::string text(200, static_cast<char>('a' + t));
            for (int i = 0; i < 300; ++i)
                __android_log_write(ANDROID_LOG_INFO, "T", text.c_str());
        });
    }
    for (auto& thread : threads)
        thread.join();
    std::string output = all.take();
    size_t lines = 0;
    for (size_t at = 0; at < output.size(); ++lines) {
        size_t end = output.find('\n', at);
        std::string text = output.substr(at, end - at);
        ASSERT_EQ(text, "I T       : " + std::string(200, text.back()));
        at = end + 1;
    }
    EXPECT_EQ(lines, 900u);
}

TEST(Log, FFmpegMessages_GetThePriorityOfTheirLevel) {
    LogCapture log;
    const struct {
        int level;
        int priority;
    } cases[] = {{0, ANDROID_LOG_ERROR},     {8, ANDROID_LOG_ERROR},    {16, ANDROID_LOG_ERROR},
                 {17, ANDROID_LOG_WARN},     {24, ANDROID_LOG_WARN},    {32, ANDROID_LOG_INFO},
                 {40, ANDROID_LOG_DEBUG},    {48, ANDROID_LOG_VERBOSE}, {56, ANDROID_LOG_VERBOSE},
                 {0x8010, ANDROID_LOG_ERROR}};
    for (const auto& c : cases) {
        ffmpegMessage(c.level, "stream %d\n", 3);
        auto lines = log.take();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].priority, c.priority) << c.level;
        EXPECT_EQ(lines[0].tag + "|" + lines[0].text, "FFmpeg|stream 3");
    }
    ffmpegMessage(-8, "quiet");
    ffmpegMessage(16, "\n");
    EXPECT_TRUE(log.take().empty());
}

TEST(AssertionDeathTest, Texts_NameFileLineAndCondition) {
    const int two = 2;
    EXPECT_DEATH(CHECK(two == 3), "F .*: .*LogTest.cpp:[0-9]+ CHECK\\(two == 3\\) failed\\.");
    EXPECT_DEATH(CHECK_LT(two, -1), "CHECK_LT\\( two,-1\\) failed: 2 vs\\. -1");
    EXPECT_DEATH(TRESPASS(), "LogTest.cpp:[0-9]+ Should not be here\\.");
    EXPECT_DEATH(__android_log_assert("a < b", "Tag", nullptr),
                 "F Tag     : Assertion failed: a < b");
}

TEST(Properties, ValuesDefaultsAndLimits) {
    char value[PROPERTY_VALUE_MAX];
    const std::string longest(91, 'v');
    EXPECT_EQ(property_get("test.unset", value, "0"), 1);
    EXPECT_STREQ(value, "0");
    EXPECT_EQ(property_get("test.unset", value, nullptr), 0);
    EXPECT_STREQ(value, "");
    EXPECT_EQ(property_get("test.unset", value, std::string(200, 'd').c_str()), 91);

    EXPECT_EQ(property_set("test.set", longest.c_str()), 0);
    EXPECT_EQ(property_set("test.set", (longest + "v").c_str()), -EINVAL);
    EXPECT_EQ(property_set("", "x"), -EINVAL);
    EXPECT_EQ(property_get("test.set", value, "0"), 91);
    EXPECT_EQ(value, longest);
    EXPECT_EQ(property_set("test.set", nullptr), 0);
    EXPECT_EQ(property_get("test.set", value, "default"), 7) << "an empty value counts as unset";
}

TEST(ProgramName, CanBeSet_AndOldTextsStay) {
    // By the C library: an emulator may run the executable by another name.
    const std::string original = getprogname();
    EXPECT_EQ(original, program_invocation_short_name);
    setprogname("/system/bin/com.example:push");
    const char* old = getprogname();
    setprogname(original.c_str());
    EXPECT_STREQ(old, "com.example:push");
    EXPECT_EQ(getprogname(), original);
}
