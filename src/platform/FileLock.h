// A lock that one process at a time can hold, and that goes with the process however it ends.
#pragma once

#include <string>

#include "platform/LockPause.h"

namespace kalvex::platform {

class FileLock {
  public:
    FileLock() = default;
    ~FileLock() { Release(); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // Makes the file if it is not there; it is for its owner alone, since whoever can open it can
    // hold the lock. What is no regular file, a link among them, is refused. False with the
    // system's words in `error`; or, where `taken` tells that another process has the lock and kept
    // it for as long as the pause waits, with that process, such as "sorvaned[4711]".
    bool Acquire(const std::string& path, bool& taken, std::string& error, const LockPause& pause);
    void Release();

  private:
    int m_fd = -1;
};

}  // namespace kalvex::platform
