#include "decline_reason.h"

#include <cstdio>
#include <cstdlib>

#include "text.h"

namespace orvel::probe {
namespace {

// The plug-in answers yes or no only; what it logs on the way tells the reason. First row that
// matches wins.
struct Reason {
    const char* logged;
    const char* sentence;
};
constexpr Reason kReasons[] = {
        {"Sniff, disable ffmpeg parser for packageName",
         "the plug-in stands back in processes of this name"},
        {"FFmpegObject initCheck failed", "the plug-in could not set itself up"},
        {"sniff fail: OOM", "no memory for the probe"},
        {"id3 tag size is corrupted", "its ID3 tags take 3 MiB or more"},
        {"sniff: could not find stream information", "its streams cannot be made out"},
};

}  // namespace

std::string declineReason(const std::vector<std::string>& log, const std::string& mask) {
    if (atoi(mask.c_str()) == 0) {
        return "mm.enable.orvel_parser is \"" + mask + "\", which enables no container";
    }
    for (const Reason& reason : kReasons) {
        for (const std::string& line : log) {
            if (line.find(reason.logged) != std::string::npos) return reason.sentence;
        }
    }
    for (const std::string& line : log) {
        long wanted = 0, got = 0;
        if (sscanf(line.c_str(), "Wanna read %ld bytes, but got %ld bytes", &wanted, &got) == 2) {
            return got < 0 ? "the source could not be read: " +
                                     statusText(static_cast<int32_t>(got))
                           : "too short: a probe needs 1024 bytes and got " + std::to_string(got);
        }
    }
    for (const std::string& line : log) {
        char mime[64];
        unsigned flag = 0;
        int score = 0;
        if (sscanf(line.c_str(), "mime:%63[^,], mediaFlag:0x%x, finalScore:%d", mime, &flag,
                   &score) != 3) {
            continue;
        }
        if (score <= 25) {
            return "no enabled container fits (best probe score " + std::to_string(score) +
                   ", more than 25 is needed)";
        }
        return std::string("recognised as ") + mime +
               ", but its main audio is neither DTS nor E-AC-3, and only for these the plug-in "
               "takes this container";
    }
    return "";
}

}  // namespace orvel::probe
