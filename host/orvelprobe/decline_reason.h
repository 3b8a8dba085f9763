// Why a file was not taken, in one sentence.
#pragma once

#include <string>
#include <vector>

namespace orvel::probe {

// `log`: what the plug-in logged while it decided (info priority and above); `mask`: the value of
// mm.enable.orvel_parser. Empty when neither tells.
std::string declineReason(const std::vector<std::string>& log, const std::string& mask);

}  // namespace orvel::probe
