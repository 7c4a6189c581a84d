// The disk below SQLite, which fails when it is told to. One at a time in a process.
#pragma once

#include <cstdint>

namespace kalvex::server {

class FaultyDisk {
  public:
    // From here on files that SQLite opens lie on it, until it goes; they are closed before.
    FaultyDisk();
    ~FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    // Of all that changes the disk (a file is made or removed, written, cut, brought to the disk,
    // room of the shared memory is made) so many succeed, then so many fail. Any thread, as below.
    void Fail(std::int64_t after, std::int64_t count);
    // Whatever is left to fail succeeds.
    void Mend();
    // That have failed since Fail.
    std::int64_t Failures() const;

    // The next reading stands until Release.
    void HoldRead();
    void AwaitHeld();
    void Release();
};

}  // namespace kalvex::server
