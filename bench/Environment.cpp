#include "Environment.h"

#include <sched.h>
#include <sys/prctl.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <system_error>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
}

namespace orvel::bench {
namespace {

constexpr int kLoops = 3;
constexpr useconds_t kSettleUs = 20000;

[[noreturn]] void fail(const char* step) {
    throw std::system_error(errno, std::generic_category(), step);
}

cpu_set_t sCores;  // of the whole run; set by useTwoCores

// The last `count` of `cores`: interrupts are served by the first.
cpu_set_t lastOf(const cpu_set_t& cores, int count) {
    cpu_set_t chosen;
    CPU_ZERO(&chosen);
    for (int core = CPU_SETSIZE; core-- > 0 && CPU_COUNT(&chosen) < count;) {
        if (CPU_ISSET(core, &cores)) CPU_SET(core, &chosen);
    }
    return chosen;
}

void pinTo(const cpu_set_t& cores) {
    if (sched_setaffinity(0, sizeof(cores), &cores) != 0) fail("sched_setaffinity");
}

int startBusyLoop() {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) fail("fork");
    if (child > 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    for (;;)
        asm volatile("");
}

// What follows "key" and a separator in the first line of a file that begins with it.
std::string entry(const char* file, const std::string& key) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, key.size(), key) != 0) continue;
        const size_t begin = line.find_first_not_of("\t :=\"", key.size());
        return begin == std::string::npos ? "" : line.substr(begin, line.find('"', begin) - begin);
    }
    return "";
}

}  // namespace

void useTwoCores() {
    if (sched_getaffinity(0, sizeof(sCores), &sCores) != 0) fail("sched_getaffinity");
    sCores = lastOf(sCores, 2);
    pinTo(sCores);
}

Environment::Environment(Where where) {
    if (where == Where::OneCore) pinTo(lastOf(sCores, 1));
    if (where != Where::Loaded) return;
    while (mLoops.size() < kLoops)
        mLoops.push_back(startBusyLoop());
    usleep(kSettleUs);
}

Environment::~Environment() {
    for (int loop : mLoops)
        kill(loop, SIGKILL);
    for (int loop : mLoops)
        waitpid(loop, nullptr, 0);
    pinTo(sCores);
}

std::vector<std::string> describeMachine() {
    utsname system{};
    uname(&system);
    double load = 0;
    getloadavg(&load, 1);
    const time_t now = time(nullptr);
    const unsigned version = avformat_version();
    std::ostringstream date, machine, software, ffmpeg;
    date << "Date: " << std::put_time(localtime(&now), "%F %R");
    machine << "Machine: " << entry("/proc/cpuinfo", "model name") << ", " << system.machine << ", "
            << CPU_COUNT(&sCores) << " cores used of " << sysconf(_SC_NPROCESSORS_ONLN)
            << "; load average of the minute before: " << load;
    software << "System: " << entry("/etc/os-release", "PRETTY_NAME") << ", Linux "
             << system.release;
    ffmpeg << "FFmpeg: " << av_version_info() << ", libavformat " << AV_VERSION_MAJOR(version)
           << "." << AV_VERSION_MINOR(version) << "." << AV_VERSION_MICRO(version);
    return {date.str(), machine.str(), software.str(), ffmpeg.str()};
}

double peakResidentBytes() {
    return 1024 * strtod(entry("/proc/self/status", "VmHWM").c_str(), nullptr);
}

}  // namespace orvel::bench
