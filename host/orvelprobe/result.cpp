#include "result.h"

#include <iterator>

namespace orvel::probe {
namespace {

constexpr const char* kNames[] = {"taken",  "declined", "unreadable", "differs",
                                  "failed", "crashed",  "timed out"};
static_assert(std::size(kNames) == kResultCount);

}  // namespace

Result resultOf(const Report& report) {
    if (!report.opened) return Result::Unreadable;
    if (report.exitCode == kExitDeclined) return Result::Declined;
    if (report.verify && !report.verify->differences.empty()) return Result::Differs;
    return report.exitCode == kExitFine ? Result::Taken : Result::Failed;
}

const char* resultName(Result result) {
    return kNames[static_cast<size_t>(result)];
}

std::string remarkOf(const Report& report) {
    if (!report.error.empty()) return report.error;
    return report.taken ? "" : report.reason;
}

}  // namespace orvel::probe
