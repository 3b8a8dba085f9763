#include "collect/Warnings.h"

#include <media/stagefright/MediaErrors.h>
#include <strings.h>

#include "Words.h"
#include "framework/Format.h"

namespace orvel::probe {
namespace {

constexpr int64_t kRoundingBytes = 8;  // chunks that were not padded
constexpr int64_t kLeastMissingUs = 500000;
constexpr int64_t kMissingShare = 20;  // a twentieth of the duration

// How much of its duration a track lacks at the end; 0 when it is well. Text has pauses by its
// nature. The first time counts for the rest: a track may begin late.
int64_t missingUs(const Json& track) {
    const Json& format = track["format"];
    const int64_t durationUs = intOf(format, host::kKeyDurationUs), count = intOf(track, "count");
    const bool isText = strncasecmp(textOf(format, host::kKeyMime).c_str(), "text/", 5) == 0;
    if (isText || intOf(track, "end") != android::ERROR_END_OF_STREAM) return 0;
    const int64_t lastUs = intOf(track, "lastUs");
    const int64_t stepUs = count < 2 ? 0 : (lastUs - intOf(track, "firstUs")) / (count - 1);
    const int64_t allowed = std::max({kLeastMissingUs, durationUs / kMissingShare, 3 * stepUs});
    return durationUs - lastUs - stepUs > allowed ? durationUs - lastUs - stepUs : 0;
}

// Where containers give one duration for all tracks, one that lasts so long is enough; so all have
// to be read.
bool endsEarly(const Json& track, const Json& tracks) {
    const auto durationUs = [](const Json& one) {
        return intOf(one["format"], host::kKeyDurationUs, -1);
    };
    return missingUs(track) > 0 &&
           std::none_of(tracks.begin(), tracks.end(), [&](const Json& other) {
               return durationUs(other) == durationUs(track) && intOf(other, "count") > 0 &&
                      missingUs(other) == 0;
           });
}

}  // namespace

Json warningsOf(const Json& tree, const Findings& findings) {
    Json warnings = Json::array();
    const auto add = [&warnings](bool found, const char* kind, const std::string& text,
                                 const Json& numbers) {
        if (!found) return;
        warnings.push_back({{"kind", kind}, {"text", text}});
        warnings.back().update(numbers);
    };
    const Json& tracks = listOf(tree, "tracks");
    const int64_t trackCount = intOf(objectOf(tree, "private"), "trackCount");
    const bool isWhole = tracks.size() == static_cast<size_t>(trackCount);
    add(trackCount == 0, "no-track", "taken, but there is no track in it", Json::object());
    const int64_t fileBytes = intOf(tree, "fileBytes");
    add(findings.claimedBytes > fileBytes + kRoundingBytes, "cut-off",
        "cut off: the file has " + sizeText(fileBytes) + ", its container says " +
                sizeText(findings.claimedBytes),
        {{"fileBytes", fileBytes}, {"claimedBytes", findings.claimedBytes}});
    for (const Json& skipped : listOf(tree, "skipped")) {
        add(textOf(skipped, "type") != "other", "skipped-stream",
            textOf(skipped, "type") + " stream skipped: " + textOf(skipped, "codec"), skipped);
    }
    bool allClean = true;
    for (const Json& track : tracks) {
        const Json& format = track["format"];
        const std::string name = "track " + track["index"].dump();
        const int64_t index = intOf(track, "index"), empty = intOf(track, "empty");
        const int64_t durationUs = intOf(format, host::kKeyDurationUs),
                      lastUs = intOf(track, "lastUs");
        const int64_t limit = intOf(format, "max-input-size"), largest = intOf(track, "largest");
        const int64_t end = intOf(track, "end");
        allClean &= end == android::OK || end == android::ERROR_END_OF_STREAM;
        add(isWhole && endsEarly(track, tracks), "ends-early",
            name + " ends early: its last sample is at " + secondsText(lastUs) + " of " +
                    secondsText(durationUs),
            {{"track", index}, {"lastUs", lastUs}, {"durationUs", durationUs}});
        add(empty > 0 && textOf(format, host::kKeyMime).compare(0, 5, "text/") != 0,
            "empty-samples", name + ": " + countText(empty, "sample") + " delivered empty",
            {{"track", index}, {"count", empty}});
        add(limit > 0 && largest > limit, "large-samples",
            name + ": a sample of " + countText(largest) + " bytes, max-input-size is " +
                    countText(limit),
            {{"track", index}, {"largest", largest}, {"maxInputSize", limit}});
    }
    add(findings.sourceFailures > 0 && allClean, "source-error",
        "the source failed " + countText(findings.sourceFailures, "time") + ", first at byte " +
                countText(findings.failedAt) + " with " + statusText(findings.failure) +
                ", but no read ended with an error",
        {{"count", findings.sourceFailures},
         {"offset", findings.failedAt},
         {"status", findings.failure}});
    return warnings;
}

}  // namespace orvel::probe
