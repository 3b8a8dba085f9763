#pragma once

#include "Options.h"

namespace orvel::probe {

/**
 * The command: expands the files, checks the outputs, has each file handled by a child, renders
 * what they report in the files' order. Returns the exit code. Throws std::exception for what keeps
 * it from beginning, and Interrupted.
 */
int runCommand(const Options& options);

}  // namespace orvel::probe
