#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace orvel::probe {

using Json = nlohmann::ordered_json;

/** Exit codes of the command; of several files the highest counts. */
enum ExitCode { kExitFine = 0, kExitAttention = 1, kExitUsage = 2, kExitFailed = 3 };

/** One delivered sample. Plain bytes: it crosses the pipe between two copies of one program. */
struct Sample {
    int64_t timeUs = 0;
    int64_t targetTimeUs = INT64_MIN;  // INT64_MIN: none was named
    uint32_t size = 0;                 // bytes of the delivered range
    uint32_t track = 0;                // the extractor's index
    bool sync = false;
    std::array<uint8_t, 16> md5{};  // over the delivered range; all zero unless it was asked for
};

/**
 * What one file had to say: the structure that a child collects and every output is written from.
 * The tree is what --json prints (docs/orvelprobe-json.md), samples apart, with one member more:
 * "private", which is for the other outputs:
 *   exit        exit code of this file
 *   opened      the plug-in was asked
 *   noPlugin    the plug-in cannot be loaded: no other file can do better
 *   notes       what the plug-in warned of, lines
 *   written     outputs: {"output": "cover" or a track's index, if it is whole, "text"}
 *   reading     {"seconds", "firstSampleSeconds", "firstSampleBytes"}, wall times
 *   listSamples the samples are to be listed
 *   trackCount  of the file, whichever were asked for
 *   plugin      its path
 *   ending      "crashed", "timed out" or "failed" when the child did not come to its end
 */
struct Report {
    Json tree = Json::object();
    std::map<size_t, std::vector<Sample>> samples;  // by track index, in the order of the read
    bool whole = false;                             // the child came to the end of its work
};

enum class Result { Taken, Warned, Declined, Unreadable, Differs, Failed, Crashed, TimedOut };
constexpr size_t kResultCount = static_cast<size_t>(Result::TimedOut) + 1;

Result resultOf(const Json& tree);
/** "taken", "timed out". */
const char* resultName(Result result);
/** Why it was declined, or what went wrong; empty when all went well. Untrusted text. */
std::string remarkOf(const Json& tree);

/** Members of an object, whatever a plug-in has put there: another type counts as absent. */
std::string textOf(const Json& object, const char* key);
int64_t intOf(const Json& object, const char* key, int64_t absent = 0);
/** An empty list when there is none. */
const Json& listOf(const Json& object, const char* key);
/** An empty object when there is none. */
const Json& objectOf(const Json& object, const char* key);
/** The bytes of a value {"size", "hex"}; empty when it is none. */
std::string bytesOf(const Json& object, const char* key);

/** The child's end of the pipe: messages of CBOR (RFC 8949), each behind its length. */
class ReportSender {
  public:
    explicit ReportSender(FILE* out) : mOut(out) {}
    /** All that is known so far; what comes later may be the end of this process. */
    void send(const Json& tree, bool whole);
    /** Leaves in batches, so that memory stays bounded however long the file is. */
    void add(const Sample& sample);

  private:
    void flushSamples();
    void write(const Json& message);

    FILE* const mOut;
    std::vector<Sample> mBatch;
};

/** What arrived; a message that is cut off or damaged, and what follows it, is left out. */
Report receiveReport(const std::string& bytes);

}  // namespace orvel::probe
