// Locks on open files and folders, which processes take by flock.
#pragma once

#include <string>

#include "platform/LockPause.h"

namespace kalvex::platform {

// Locks what is open for this process alone, and waits for others as the pause says. False with
// errno set: EWOULDBLOCK when another process has the lock.
bool LockAlone(int fd, const LockPause& pause);

// The program and the process that have it locked, such as "sorvaned[4711]"; "?" stands for what
// the system does not tell. UTF-8 as far as the program's name is, its control characters escaped.
std::string LockHolder(int fd);

}  // namespace kalvex::platform
