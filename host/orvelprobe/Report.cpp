#include "Report.h"

namespace orvel::probe {
namespace {

constexpr size_t kBatch = 1024;
constexpr const char* kNames[] = {"taken",   "warned", "declined", "unreadable",
                                  "differs", "failed", "crashed",  "timed out"};
static_assert(std::size(kNames) == kResultCount);

const Json kAbsent, kNoList = Json::array(), kNoObject = Json::object();

const Json& memberOf(const Json& object, const char* key) {
    return object.is_object() && object.contains(key) ? object[key] : kAbsent;
}

void append(const Json::binary_t& bytes, Report* report) {
    Sample sample;
    for (size_t at = 0; at + sizeof(sample) <= bytes.size(); at += sizeof(sample)) {
        memcpy(static_cast<void*>(&sample), bytes.data() + at, sizeof(sample));
        report->samples[sample.track].push_back(sample);
    }
}

}  // namespace

Result resultOf(const Json& tree) {
    const Json& more = objectOf(tree, "private");
    const std::string ending = textOf(more, "ending");
    for (const Result broken : {Result::Crashed, Result::TimedOut, Result::Failed})
        if (ending == resultName(broken)) return broken;
    if (!more.value("opened", false)) return Result::Unreadable;
    const int64_t exit = intOf(more, "exit");
    if (exit > kExitAttention) {
        const bool differs = !listOf(objectOf(tree, "verify"), "differences").empty();
        return differs ? Result::Differs : Result::Failed;
    }
    if (!tree.value("taken", false)) return Result::Declined;
    return exit == kExitFine ? Result::Taken : Result::Warned;
}

const char* resultName(Result result) {
    return kNames[static_cast<size_t>(result)];
}

std::string remarkOf(const Json& tree) {
    const std::string error = textOf(tree, "error");
    if (!error.empty()) return error;
    if (!tree.value("taken", false)) return textOf(tree, "reason");
    std::string text;
    for (const Json& warning : listOf(tree, "warnings"))
        text += (text.empty() ? "" : "; ") + textOf(warning, "text");
    return text;
}

std::string textOf(const Json& object, const char* key) {
    const Json& value = memberOf(object, key);
    return value.is_string() ? value.get<std::string>() : std::string();
}

int64_t intOf(const Json& object, const char* key, int64_t absent) {
    const Json& value = memberOf(object, key);
    return value.is_number_integer() ? value.get<int64_t>() : absent;
}

const Json& listOf(const Json& object, const char* key) {
    const Json& value = memberOf(object, key);
    return value.is_array() ? value : kNoList;
}

const Json& objectOf(const Json& object, const char* key) {
    const Json& value = memberOf(object, key);
    return value.is_object() ? value : kNoObject;
}

std::string bytesOf(const Json& object, const char* key) {
    const std::string hex = textOf(memberOf(object, key), "hex");
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

void ReportSender::send(const Json& tree, bool whole) {
    flushSamples();
    write({{whole ? "end" : "head", tree}});
}

void ReportSender::add(const Sample& sample) {
    mBatch.push_back(sample);
    if (mBatch.size() >= kBatch) flushSamples();
}

void ReportSender::flushSamples() {
    if (mBatch.empty()) return;
    const auto* bytes = reinterpret_cast<const uint8_t*>(mBatch.data());
    write({{"samples", Json::binary({bytes, bytes + mBatch.size() * sizeof(Sample)})}});
    mBatch.clear();
}

void ReportSender::write(const Json& message) {
    const std::vector<uint8_t> bytes = Json::to_cbor(message);
    const uint64_t length = bytes.size();
    fwrite(&length, sizeof(length), 1, mOut);
    fwrite(bytes.data(), 1, bytes.size(), mOut);
    fflush(mOut);
}

Report receiveReport(const std::string& bytes) {
    Report report;
    uint64_t length = 0;
    for (size_t at = 0; bytes.size() - at >= sizeof(length); at += length) {
        memcpy(&length, bytes.data() + at, sizeof(length));
        at += sizeof(length);
        if (length > bytes.size() - at) break;
        const Json message =
                Json::from_cbor(bytes.begin() + static_cast<ptrdiff_t>(at),
                                bytes.begin() + static_cast<ptrdiff_t>(at + length), true, false);
        if (!message.is_object() || message.size() != 1) break;
        const auto member = message.begin();
        if (member->is_binary()) {
            append(member->get_binary(), &report);
        } else if (member->is_object()) {
            report.tree = *member;
            report.whole = member.key() == "end";
        }
    }
    return report;
}

}  // namespace orvel::probe
