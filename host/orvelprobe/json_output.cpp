#include "json_output.h"

#include <charconv>
#include <cinttypes>
#include <cmath>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "explain_output.h"
#include "text.h"
#include "verify_output.h"

namespace orvel::probe {
namespace {

using Json = nlohmann::ordered_json;

// A double with the shortest text of the float: 0.9f is 0.9 in the output, not 0.8999999761581421.
double shortest(float value) {
    if (!std::isfinite(value)) return value;
    char text[32];
    const auto written = std::to_chars(text, text + sizeof(text), value);
    double result = 0;
    std::from_chars(text, written.ptr, result);
    return result;
}

Json valueJson(const host::FormatValue& value) {
    return std::visit(
            [](const auto& held) -> Json {
                using Held = std::decay_t<decltype(held)>;
                if constexpr (std::is_same_v<Held, float>) {
                    return shortest(held);
                } else if constexpr (std::is_same_v<Held, host::FormatBytes>) {
                    return Json{{"size", held.size()}, {"hex", hexText(held.data(), held.size())}};
                } else {
                    return held;
                }
            },
            value);
}

Json formatJson(const FormatReport& format) {
    Json json = Json::object();
    for (const host::FormatEntry& entry : format.entries)
        json[entry.key] = valueJson(entry.value);
    return json;
}

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// A long file has hundreds of thousands of samples: they are written as they stand, never held as a
// tree of JSON values.
void writeSamples(const std::vector<Sample>& samples, FILE* out) {
    const char* separator = "";
    for (const Sample& sample : samples) {
        fprintf(out, "%s{\"timeUs\":%" PRId64 ",\"size\":%zu,\"sync\":%s,\"md5\":\"%s\"", separator,
                sample.timeUs, sample.size, sample.sync ? "true" : "false",
                hexText(sample.md5.data(), sample.md5.size()).c_str());
        if (sample.targetTimeUs) fprintf(out, ",\"targetTimeUs\":%" PRId64, *sample.targetTimeUs);
        fputc('}', out);
        separator = ",";
    }
}

// Writes an object without its closing brace, so that more members can follow.
void writeOpen(const Json& object, FILE* out) {
    std::string text = dump(object);
    text.pop_back();
    fputs(text.c_str(), out);
}

void writeTrack(const TrackReport& track, bool listSamples, FILE* out) {
    Json json{{"index", track.index}, {"format", formatJson(track.format)}};
    if (track.read) {
        json["count"] = track.read->count;
        json["bytes"] = track.read->bytes;
        json["end"] = track.read->end;
    }
    writeOpen(json, out);
    if (listSamples && track.read) {
        fputs(",\"samples\":[", out);
        writeSamples(track.samples, out);
        fputc(']', out);
    }
    fputc('}', out);
}

void writeSeek(const SeekReport& seek, FILE* out) {
    fprintf(out, "{\"timeUs\":%" PRId64 ",\"mode\":%d,\"tracks\":[", seek.timeUs, seek.mode);
    const char* separator = "";
    for (const SeekTrackReport& track : seek.tracks) {
        fprintf(out, "%s{\"index\":%zu,\"status\":%d,\"samples\":[", separator, track.index,
                track.status);
        writeSamples(track.samples, out);
        fputs("]}", out);
        separator = ",";
    }
    fputs("]}", out);
}

Json explainJson(const Report& report) {
    Json steps = Json::array();
    for (const TraceEvent& event : report.explain->events) {
        switch (event.kind) {
            case TraceEvent::Kind::Read:
                steps.push_back({{"read",
                                  {{"offset", event.offset},
                                   {"length", event.length},
                                   {"result", event.result}}}});
                break;
            case TraceEvent::Kind::Size:
                steps.push_back({{"size", event.result}});
                break;
            case TraceEvent::Kind::Line:
                steps.push_back({{"log",
                                  {{"priority", std::string(1, priorityLetter(event.priority))},
                                   {"tag", event.tag},
                                   {"text", event.text}}}});
                break;
        }
    }
    return {{"verdict", verdictText(report)},
            {"steps", std::move(steps)},
            {"omitted", report.explain->omitted}};
}

Json verifyJson(const VerifyReport& verify) {
    Json differences = Json::array();
    for (const Difference& difference : verify.differences) {
        Json& json = differences.emplace_back(Json::object());
        if (difference.track) json["track"] = *difference.track;
        json["what"] = differenceName(difference.what);
        switch (difference.what) {
            case Difference::What::Track:
                json["text"] = difference.text;
                continue;
            case Difference::What::Payload:
                json["sample"] = difference.sample;
                json["byte"] = difference.plugin;
                continue;
            case Difference::What::End:
                break;
            default:
                json["sample"] = difference.sample;
        }
        if (difference.what != Difference::What::Missing) json["plugin"] = difference.plugin;
        if (difference.what != Difference::What::Extra) json["reference"] = difference.reference;
    }
    return {{"reference", verify.library},
            {"compared", verify.compared},
            {"differences", std::move(differences)}};
}

}  // namespace

void writeJson(const Report& report, FILE* out) {
    Json head{{"file", report.file}};
    if (report.opened) head["taken"] = report.taken;
    if (report.taken) {
        head["confidence"] = shortest(report.confidence);
        head["extractor"] = report.extractor;
        head["format"] = formatJson(report.format);
    }
    if (report.explain) head["explain"] = explainJson(report);
    writeOpen(head, out);
    const char* separator = "";
    if (report.taken) {
        fputs(",\"tracks\":[", out);
        for (const TrackReport& track : report.tracks) {
            fputs(separator, out);
            writeTrack(track, report.listSamples, out);
            separator = ",";
        }
        fputc(']', out);
    }
    if (!report.seeks.empty()) {
        separator = "";
        fputs(",\"seeks\":[", out);
        for (const SeekReport& seek : report.seeks) {
            fputs(separator, out);
            writeSeek(seek, out);
            separator = ",";
        }
        fputc(']', out);
    }
    if (report.verify) fprintf(out, ",\"verify\":%s", dump(verifyJson(*report.verify)).c_str());
    fputs(report.error.empty() ? "}\n" : addJsonError("}", report.error).c_str(), out);
}

std::string addJsonError(const std::string& line, const std::string& error) {
    const size_t brace = line.rfind('}');
    return line.substr(0, brace) + ",\"error\":" + dump(Json(error)) + "}\n";
}

}  // namespace orvel::probe
