#include "render/Text.h"

#include <cinttypes>

#include "Words.h"

namespace orvel::probe {
namespace {

// A long file has hundreds of thousands of samples: they are written as they stand, never held as a
// tree of JSON values.
void writeSamples(const std::vector<Sample>& samples) {
    const char* separator = "";
    for (const Sample& sample : samples) {
        printf("%s{\"timeUs\":%ld,\"size\":%u,\"sync\":%s,\"md5\":\"%s\"", separator, sample.timeUs,
               sample.size, sample.sync ? "true" : "false",
               hexText(sample.md5.data(), sample.md5.size()).c_str());
        if (sample.targetTimeUs != INT64_MIN) printf(",\"targetTimeUs\":%ld", sample.targetTimeUs);
        putchar('}');
        separator = ",";
    }
}

void writeTracks(const Report& report, const Json& tracks) {
    const bool lists = objectOf(report.tree, "private").value("listSamples", false);
    const char* separator = "[";
    for (const Json& track : tracks) {
        const std::string text = dump(track);
        printf("%s%s", separator, text.substr(0, text.size() - 1).c_str());
        if (lists && track.contains("count")) {
            const auto samples = report.samples.find(static_cast<size_t>(intOf(track, "index")));
            printf(",\"samples\":[");
            if (samples != report.samples.end()) writeSamples(samples->second);
            putchar(']');
        }
        putchar('}');
        separator = ",";
    }
    printf(tracks.empty() ? "[]" : "]");
}

}  // namespace

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void writeJsonLine(const Report& report) {
    const char* separator = "{";
    for (const auto& [key, value] : report.tree.items()) {
        if (key == "private") continue;
        printf("%s\"%s\":", separator, key.c_str());
        separator = ",";
        if (key == "tracks") {
            writeTracks(report, value);
        } else {
            fputs(dump(value).c_str(), stdout);
        }
    }
    printf("}\n");
}

}  // namespace orvel::probe
