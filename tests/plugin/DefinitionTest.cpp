// The definition that the framework loads, and what the sniff function adds to a probe.
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <media/stagefright/foundation/AMessage.h>
#include <stdlib.h>
#include <string.h>

#include "FakeFramework.h"
#include "LogCapture.h"
#include "Parser2Creater.h"

namespace orvel {
namespace {

using android::FreeMetaFunc;
using test::Lines;
using test::WavSource;

struct Definition : testing::Test {
    ~Definition() override {
        enable("0");
        setprogname("plugin_tests");
    }
    void enable(const char* mask) { property_set("mm.enable.orvel_parser", mask); }

    test::LogCapture log;
};

TEST_F(Definition, Property_SelectsTheExtensionsOfEachCall) {
    const std::string mp4 = "3g2 3ga 3gp 3gpp 3gpp2 m4a m4r m4v mov mp4 qt ";
    const std::string all = mp4 +
                            "rm rmvb mkv avi mp2 mp3 ac3 eac3 ec3 flv dts aif aiff flac ape asf "
                            "wma wmv dsf dff dsd wav ";
    const struct {
        const char* property;
        std::string extensions;
        const char* mask;
    } cases[] = {{"0", "", "0"},
                 {"32767", all, "7fff"},
                 {"1", mp4, "1"},
                 {"0x10", "", "0"},
                 {"16", "mp2 mp3 ", "10"},
                 {"2084 dts", "mkv ac3 eac3 ec3 asf wma wmv ", "824"},
                 {"", "", "0"}};
    for (const auto& test : cases) {
        enable(test.property);
        const android::ExtractorDef definition = GETEXTRACTORDEF();
        std::string extensions;
        for (const char** entry = definition.u.v3.supported_types; *entry != nullptr; ++entry) {
            extensions += *entry + std::string(" ");
        }
        EXPECT_EQ(extensions, test.extensions) << test.property;
        EXPECT_EQ(log.take("Parser2Creater"),
                  Lines{std::string("I Parser2Creater: OrvelParser_Flags == ") + test.mask});
        const uint32_t identity[] = {3, 0x521C9A3F, 0x8D4B07E4, 0x5EC02196, 0x10D8B37A, 2};
        EXPECT_EQ(memcmp(&definition, identity, sizeof(identity)), 0);
        EXPECT_STREQ(definition.extractor_name, "OrvelMedia2 Extractor");
        EXPECT_EQ(definition.u.v3.sniff, Sniff);
    }
}

TEST_F(Definition, Sniff_DeclinesOneApplicationByItsName) {
    const struct {
        const char* name;
        bool refused;
    } cases[] = {{"com.tencent.mm", true},  {"com.tencent.mm:push", true},
                 {"com.tencent.mmx", true}, {"com.tencent.m", false},
                 {"com.tencent.mn", false}, {"a.com.tencent.mm", false}};
    for (const auto& test : cases) {  // with no container enabled, a probe declines as well
        WavSource source(4000);
        setprogname(test.name);
        float confidence = 0.5f;
        void* meta = &source;
        EXPECT_EQ(Sniff(source.table(), &confidence, &meta, nullptr), nullptr) << test.name;
        EXPECT_EQ(confidence, test.refused ? 0.5f : 0.0f) << test.name;
        EXPECT_EQ(meta, &source);
        const Lines lines = log.take("Parser2Creater");
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0][0], test.refused ? 'I' : 'W') << test.name;
    }
}

TEST_F(Definition, Sniff_TellsTheExtractorWhetherTheSourceIsLocal) {
    enable("16384");
    for (uint32_t flags = 0; flags < 32; ++flags) {
        WavSource source(4000, flags);
        float confidence = 0;
        void* meta = nullptr;
        FreeMetaFunc freeMeta = nullptr;
        ASSERT_EQ(Sniff(source.table(), &confidence, &meta, &freeMeta), CreateExtractor);
        EXPECT_TRUE(confidence == 0.9f && freeMeta == nullptr);
        // The first reference is the extractor's; the message goes with it.
        const android::sp<android::AMessage> message = static_cast<android::AMessage*>(meta);
        EXPECT_EQ(message->getStrongCount(), 1);
        int32_t localMode = -1;
        EXPECT_TRUE(message->findInt32("localMode", &localMode));
        EXPECT_EQ(localMode, (flags & 5) == 0 ? 1 : 0) << flags;
    }
}

}  // namespace
}  // namespace orvel
