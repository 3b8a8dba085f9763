#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace orvel::bench {

/** Of this process since it began, all threads together. */
struct Usage {
    double cpuSeconds = 0;             // user and system
    uint64_t voluntarySwitches = 0;    // a thread slept
    uint64_t involuntarySwitches = 0;  // a thread lost its core
};
Usage usage();

/** Physical memory of this process in bytes, shared pages included. */
uint64_t residentBytes();
/** The most it ever was since resetPeak(), or since the process began where that is refused. */
uint64_t peakResidentBytes();
void resetPeak();

/** Threads of this process now. */
uint64_t threadCount();

/** Of the machine over the last minute. */
double loadAverage();

/** Path of the running executable. */
std::filesystem::path thisProgram();

/**
 * Runs a program, found by PATH, and waits for its end; stderr and stdin are this process's.
 * Returns what it wrote to stdout. Throws std::runtime_error, naming the program, when it cannot be
 * started or ends with another status than 0.
 */
std::string run(const std::vector<std::string>& arguments);

}  // namespace orvel::bench
