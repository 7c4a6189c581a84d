// The children of this process, taken off the system's table, and their descriptors closed, as soon
// as they end. The records are shared with a signal handler, which sees what is atomic; they are
// never freed, only used again.
#pragma once

#include <sys/types.h>

#include <atomic>

namespace kalvex::platform {

struct ChildProcess {
    static constexpr int kRunning = -1;
    static constexpr int kLost = -2;  // another has waited for it

    std::atomic<pid_t> pid{0};         // 0 once it has ended
    std::atomic<int> state{kRunning};  // or the exit code: 128 plus the signal if one has ended it
    std::atomic<int> fd{-1};           // a descriptor of the process as long as it runs, or none
    bool inUse = false;
    ChildProcess* next = nullptr;
};

// Installs the handler; once is enough.
void WatchChildren();

// A record for a child that has just been started and has not been waited for; it owns the
// descriptor. Main thread, as is the release of a record, which may come before the child's end.
ChildProcess* AddChild(pid_t pid, int fd);
void ReleaseChild(ChildProcess* child);

// Brings the records up to date. Any thread, signal handlers too.
void ReapChildren();

}  // namespace kalvex::platform
