// What the platform's own sources know of the log.
#pragma once

namespace standin {

// Whether a line of this priority would go anywhere. Any thread; cheap.
bool logWanted(int priority);

}  // namespace standin
