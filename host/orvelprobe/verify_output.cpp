#include "verify_output.h"

#include <iterator>

namespace orvel::probe {
namespace {

constexpr const char* kNames[] = {"track",   "time",    "key",   "size",
                                  "payload", "missing", "extra", "end"};
static_assert(std::size(kNames) == static_cast<size_t>(Difference::What::End) + 1);

std::string valueText(const Difference& difference) {
    const int64_t plugin = difference.plugin, reference = difference.reference;
    const auto both = [&](const char* what, const std::string& ours, const std::string& theirs) {
        return what + ours + ", libavformat has " + theirs;
    };
    switch (difference.what) {
        case Difference::What::Time:
            return both("time ", secondsText(plugin), secondsText(reference)) + " (" +
                   offsetText(plugin, reference) + ")";
        case Difference::What::Key:
            return plugin ? "a key sample, libavformat has none"
                          : "no key sample, but libavformat's is";
        case Difference::What::Size:
            return both("", sizeText(static_cast<uint64_t>(plugin)),
                        sizeText(static_cast<uint64_t>(reference)));
        case Difference::What::Payload:
            return "payload differs from byte " + std::to_string(plugin) + " on";
        case Difference::What::Missing:
            return "missing, libavformat has one at " + secondsText(reference);
        case Difference::What::Extra:
            return "at " + secondsText(plugin) + ", libavformat has no such sample";
        case Difference::What::End:
            return both("ended with ", statusText(static_cast<int32_t>(plugin)),
                        statusText(static_cast<int32_t>(reference)));
        case Difference::What::Track:
            break;
    }
    return difference.text;
}

}  // namespace

std::string differenceText(const Difference& difference) {
    std::string text;
    if (difference.track) text = "track " + std::to_string(*difference.track);
    if (difference.what != Difference::What::Track && difference.what != Difference::What::End) {
        text += ", sample " + std::to_string(difference.sample);
    }
    return (text.empty() ? "" : text + ": ") + printable(valueText(difference));
}

const char* differenceName(Difference::What what) {
    return kNames[static_cast<size_t>(what)];
}

void writeVerify(const Page& page, const VerifyReport& verify) {
    const std::string compared =
            countText(verify.compared, "sample") + " compared with " + verify.library + ", ";
    if (verify.differences.empty()) {
        return page.row("verified", page.paint(Colour::Good, compared + "all the same"));
    }
    page.row("verified", page.paint(Colour::Bad,
                                    compared + countText(verify.differences.size(), "difference")));
    for (const Difference& difference : verify.differences)
        page.line("    " + differenceText(difference));
}

}  // namespace orvel::probe
