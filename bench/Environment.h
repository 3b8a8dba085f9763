#pragma once

#include <string>
#include <vector>

namespace orvel::bench {

/** The state of the machine that a turn meets. */
enum class Where { Quiet, OneCore, Loaded };

/**
 * Keeps this process, and the threads and processes that it starts from now on, to two of its
 * cores: what every target stands for. Call it before any thread is started.
 */
void useTwoCores();

/**
 * One turn's environment, for as long as the object lives. OneCore: the calling thread, and every
 * thread that it starts, run on one core. Loaded: three processes compute without a pause on the
 * same two cores. Make it before the turn starts its threads, in a process with no other thread.
 * Throws std::system_error.
 */
class Environment {
  public:
    explicit Environment(Where where);
    ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

  private:
    std::vector<int> mLoops;  // ids of the processes
};

/** The machine, the system and FFmpeg, a line each for the report. */
std::vector<std::string> describeMachine();

/** Most physical memory that this process ever held, in bytes. */
double peakResidentBytes();

}  // namespace orvel::bench
