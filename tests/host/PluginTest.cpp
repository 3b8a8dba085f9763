#include "framework/Plugin.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <exception>
#include <string>

#include "framework/MemorySource.h"

namespace orvel::host {
namespace {

using namespace android;

std::string gEvents;  // what the plug-in below was called for
bool gTakes, gMakes;

CMediaExtractor* create(CDataSource*, void* message) {
    gEvents += "created with " + std::string(static_cast<const char*>(message)) + ", ";
    if (!gMakes) return nullptr;
    auto* table = static_cast<CMediaExtractor*>(calloc(1, sizeof(CMediaExtractor)));
    table->free = [](void*) { gEvents += "extractor freed, "; };
    return table;
}

CreatorFunc sniff(CDataSource*, float* confidence, void** message, FreeMetaFunc* freeMessage) {
    static char text[] = "the message";
    *message = text;
    *freeMessage = [](void*) { gEvents += "message freed, "; };
    *confidence = 0.5f;
    return gTakes ? create : nullptr;
}

const char* gExtensions[] = {"one", "two", nullptr};

constexpr ExtractorDef definition(uint32_t version, const char* name, SnifferFunc function) {
    return {version,
            {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 255}},
            7,
            name,
            {.v3 = {function, gExtensions}}};
}

Plugin linked() {
    return Plugin("linked", [] { return definition(3, "Fake", sniff); });
}

TEST(Plugin, libraryThatCannotServeIsRefusedWithFileAndStep) {
    Dl_info anyLibrary = {};
    dladdr(reinterpret_cast<void*>(&std::terminate), &anyLibrary);
    const struct {
        const char *path, *text;
        GetExtractorDef entry;  // of a plug-in that needs no library
    } cases[] = {
            {"no-such-folder/no-such.so", "cannot be loaded: .*No such file", nullptr},
            {"libc.so.6", "cannot be loaded", nullptr},  // a file's name, not a system library's
            {__FILE__, "cannot be loaded", nullptr},     // no library
            {anyLibrary.dli_fname, "entry point GETEXTRACTORDEF cannot be found", nullptr},
            {"linked", "has version 2", [] { return definition(2, "Fake", sniff); }},
            {"linked", "no name", [] { return definition(3, "", sniff); }},
            {"linked", "no sniff function", [] { return definition(3, "Fake", nullptr); }},
    };
    for (const auto& [path, text, entry] : cases) {
        try {
            const Plugin plugin = entry ? Plugin(path, entry) : Plugin(path);
            ADD_FAILURE() << path << " was loaded";
        } catch (const PluginError& error) {
            EXPECT_EQ(std::string(error.what()).find(path + std::string(": ")), 0u) << error.what();
            EXPECT_TRUE(testing::internal::RE::PartialMatch(error.what(), text)) << error.what();
        }
    }
    EXPECT_EQ(linked().name(), "Fake");
    EXPECT_EQ(linked().version(), 7u);
    EXPECT_EQ(linked().uuid(), "00010203-0405-0607-0809-0a0b0c0d0eff");
    EXPECT_EQ(linked().extensions(), (std::vector<std::string>{"one", "two"}));
}

TEST(Plugin, messageOfASniffIsFreedOnceWhateverBecomesOfIt) {
    const struct {
        bool takes, create, makes;
        const char* events;
    } cases[] = {{true, true, true, "created with the message, message freed, extractor freed, "},
                 {true, true, false, "created with the message, message freed, "},
                 {true, false, true, "message freed, "},
                 {false, false, true, "message freed, "}};
    for (const auto& c : cases) {
        gEvents.clear();
        gTakes = c.takes;
        gMakes = c.makes;
        MemorySource source("x", 1);
        {
            SniffResult result = linked().sniff(source);
            EXPECT_EQ(result.taken(), c.takes);
            EXPECT_EQ(result.confidence(), 0.5f);
            SniffResult moved = std::move(result);
            EXPECT_FALSE(result.taken());
            if (c.create) {
                EXPECT_EQ(linked().create(source, std::move(moved)).has_value(), c.makes);
            }
        }
        EXPECT_EQ(gEvents, c.events);
    }
}

}  // namespace
}  // namespace orvel::host
