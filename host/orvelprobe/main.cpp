#include <csignal>
#include <exception>

#include "Options.h"
#include "Report.h"
#include "Words.h"
#include "process/Command.h"
#include "process/Supervisor.h"

int main(int argc, char** argv) {
    using namespace orvel::probe;
    Options options;
    const int done = parseOptions(argc, argv, &options);
    if (done >= 0) return done;
    signal(SIGPIPE,
           SIG_IGN);  // a write that finds no reader fails, and what is half done is undone
    try {
        return runCommand(options);
    } catch (const Interrupted& interrupted) {
        return 128 + interrupted.signal;
    } catch (const std::exception& error) {
        fprintf(stderr, "orvelprobe: %s\n", printable(error.what()).c_str());
        return kExitUsage;
    }
}
