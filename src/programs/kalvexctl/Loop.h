// The main thread's loop for a program that asks and waits for answers: posted work, signals, one
// descriptor. Main thread, but for Post.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/MainLoop.h"
#include "platform/posix/PosixMainLoop.h"

namespace kalvex::kalvexctl {

class Loop final : public platform::MainLoop {
  public:
    // Made before any other thread: from now on SIGINT, SIGTERM and SIGHUP are only noted.
    Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    void Post(std::function<void()> work) override { m_loop.Post(std::move(work)); }

    // Called about once a second while there are turns.
    void SetPeriodic(std::function<void()> work) { m_periodic = std::move(work); }

    // Waits until something is posted and does it, until a signal comes, `descriptor` can be read,
    // or the time of platform::SteadyMilliseconds has come; possibly shorter.
    void Turn(std::int64_t until, int descriptor = -1);

    // The first signal that has come; 0 when none has.
    int GetSignal() const { return m_signal; }
    // Whether the descriptor of the last turn had something to read, or had come to its end.
    bool IsReadable() const { return m_loop.IsReadable(); }

  private:
    int m_signal = 0;
    std::int64_t m_until = 0;
    std::function<void()> m_periodic = [] {};
    platform::PosixMainLoop m_loop;
};

}  // namespace kalvex::kalvexctl
