#pragma once

#include <string>

namespace orvel::host {

/**
 * Where the plug-in is when nobody says: next to this executable (a build tree), in the folder of
 * an installation, which may have been moved as a whole, then wherever the dynamic loader finds it.
 * `wanted` is given back when it is not empty. Throws std::runtime_error, naming the places, when
 * there is none; loads the library in the last case.
 */
std::string findPlugin(const std::string& wanted);

}  // namespace orvel::host
