#pragma once

#include <sys/types.h>

namespace kalvex::platform {

// Asks the windows of the process to close, on the display that the environment names; the number
// of windows that were asked. 0 where there is no display, or no library for it on this machine.
int RequestWindowClose(pid_t pid);

}  // namespace kalvex::platform
