#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/Plugin.h"

// One life of an extractor, told in bytes: what a fuzzer varies, and what a regression test replays
// as the fuzzer found it.
namespace orvel::test {

/**
 * What stands in front of the file's bytes. Every value means something, and a legal use of the
 * plug-in: tracks are started once, read and stopped only when started.
 */
struct ScriptHeader {
    enum Habit : uint8_t {
        kShortReads = 1,     // at most `amount` * 16 + 1 bytes a read
        kUnknownSize = 2,    // getSize fails
        kClaimedSize = 4,    // getSize says `claimedSize` * 64 from read number `call` on
        kFault = 8,          // read number `call` fails
        kFaultForGood = 16,  // and all later ones
        kFaultEmpty = 32,    // with no bytes in place of an error
        kSniffsToo = 64,     // all of this while sniffing, too
        kLastReadAll = 128,  // when the script has ended, start and read what is left
    };
    enum Operation : uint8_t {
        kStart,  // the track of the low four bits of the argument, as all of these
        kStop,
        kRead,  // as many samples as the high four bits say, and one
        kReadNonBlocking,
        kTrackFormat,  // the high bits are the flags
        kFileFormat,
        kDropTrack,      // destroyed, started or not
        kDropExtractor,  // its tracks live on
        kStartAll,
        kSeek0,
        kSeek1,
        kSeek2,
        kSeek3,
        kSeek4,  // and read one sample; the high bits: where
        kOperations,
    };
    struct Step {
        uint8_t operation;  // modulo kOperations
        uint8_t argument;
    };
    static constexpr size_t kSteps = 24;

    uint8_t habits = kLastReadAll;
    uint8_t amount = 0;
    uint8_t call = 0;
    uint8_t claimedSize[2] = {};  // big-endian
    uint8_t container = 0;        // 0: all are enabled; otherwise one bit alone, modulo 15
    uint8_t steps = 0;            // of the following, modulo kSteps + 1
    Step step[kSteps] = {};
};
static_assert(sizeof(ScriptHeader) == 7 + 2 * ScriptHeader::kSteps);

/**
 * Runs the life. The work is bounded: some hundred reads, buffers of up to 16 MiB. Aborts with a
 * message when the plug-in breaks its contract (a good status without a sample, a buffer that does
 * not come back). Sets "mm.enable.orvel_parser", and everything to enabled at the end.
 */
void runScript(const host::Plugin& plugin, const ScriptHeader& header, const uint8_t* file,
               size_t fileSize);

}  // namespace orvel::test
