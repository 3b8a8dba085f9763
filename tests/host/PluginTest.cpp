#include "framework/Plugin.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "FakePlugin.h"
#include "framework/CountingSource.h"
#include "framework/MemorySource.h"

namespace orvel::host {
namespace {

TEST(Plugin, libraryThatCannotServe_isRefusedWithFileAndStep) {
    const std::string notALibrary = testing::TempDir() + "not-a-library.so";
    std::ofstream(notALibrary) << "text";
    const struct {
        std::string path, text;
    } cases[] = {
            {"no-such-folder/no-such.so", "cannot be loaded: .*No such file"},
            {"libc.so.6", "cannot be loaded"},  // a bare name is a file here, not a system library
            {notALibrary, "cannot be loaded"},
            {PLUGIN_NO_ENTRY, "entry point GETEXTRACTORDEF cannot be found"},
            {PLUGIN_WRONG_VERSION, "has version 2"},
            {PLUGIN_NO_NAME, "no name"},
            {PLUGIN_NO_SNIFF, "no sniff function"},
    };
    for (const auto& c : cases) {
        try {
            Plugin plugin(c.path);
            ADD_FAILURE() << c.path << " was loaded";
        } catch (const PluginError& error) {
            const std::string text = error.what();
            EXPECT_EQ(text.find(c.path + ": "), 0u) << text;
            EXPECT_TRUE(testing::internal::RE::PartialMatch(text, c.text)) << text;
        }
    }
}

/** The offsets at which the plug-in touched the source, from 1000 up. */
std::vector<off64_t> eventsOf(const CountingSource& source) {
    std::vector<off64_t> events;
    for (const auto& read : source.reads()) {
        if (read.offset >= 1000) events.push_back(read.offset);
    }
    return events;
}

TEST(Plugin, definition_isReadAsItStands) {
    Plugin plugin(PLUGIN_GOOD);
    EXPECT_EQ(plugin.name(), "Fake Extractor");
    EXPECT_EQ(plugin.version(), 7u);
    EXPECT_EQ(plugin.uuid(), "00010203-0405-0607-0809-0a0b0c0d0eff");
    EXPECT_EQ(plugin.extensions(), (std::vector<std::string>{"one", "two"}));
}

TEST(Plugin, messageOfASniff_isFreedOnceWhateverBecomesOfIt) {
    Plugin plugin(PLUGIN_GOOD);
    using Events = std::vector<off64_t>;
    const struct {
        const char* bytes;
        bool taken, create;
        Events events;
    } cases[] = {
            {"S.", true, true, {kCreatedWithMessage, kMessageFreed, kExtractorFreed}},
            {"SN", true, true, {kCreatedWithMessage, kMessageFreed}},  // makes no extractor
            {"S.", true, false, {kMessageFreed}},
            {"x.", false, false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        MemorySource memory(c.bytes, 2);
        CountingSource source(memory, true);
        {
            SniffResult result = plugin.sniff(source);
            EXPECT_EQ(result.taken(), c.taken);
            EXPECT_EQ(result.confidence(), c.taken ? 0.5f : 0.0f);
            SniffResult moved = std::move(result);
            EXPECT_FALSE(result.taken());
            if (c.create) {
                auto extractor = plugin.create(source, std::move(moved));
                EXPECT_EQ(extractor.has_value(), c.bytes[1] != 'N');
                if (extractor) {
                    EXPECT_EQ(extractor->name(), "Fake");
                }
            } else if (!c.taken) {
                EXPECT_THROW(plugin.create(source, std::move(moved)), std::logic_error);
            }
        }
        EXPECT_EQ(eventsOf(source), c.events);
    }
}

}  // namespace
}  // namespace orvel::host
