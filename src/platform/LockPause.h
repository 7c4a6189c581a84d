// How long to wait for a lock that another process holds.
#pragma once

#include <functional>

namespace kalvex::platform {

// Called while another process holds the lock: waits a little, and answers whether to try again.
using LockPause = std::function<bool()>;

// So many seconds in all.
LockPause PauseFor(int seconds);

}  // namespace kalvex::platform
