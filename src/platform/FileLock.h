// A lock that one process at a time can hold, and that goes with the process however it ends.
#pragma once

#include <string>

namespace kalvex::platform {

class FileLock {
  public:
    FileLock() = default;
    ~FileLock() { Release(); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // Makes the file if it is not there. False with the system's words in `error`; `taken` tells
    // that another process has the lock.
    bool Acquire(const std::string& path, bool& taken, std::string& error);
    void Release();

  private:
    int m_fd = -1;
};

}  // namespace kalvex::platform
