// The containers that the plug-in knows, as its property numbers them.
#pragma once

#include <cstdint>

namespace orvel::probe {

constexpr uint32_t kAllContainers = 0x7FFF;

// "Matroska" for 0x4; nullptr for a number that is no single container's.
const char* containerName(uint32_t bit);

}  // namespace orvel::probe
