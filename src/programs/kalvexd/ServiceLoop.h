// The loop of a process without a window: signals, timers, and ticks by a clock that nobody sets.
// Main thread, but for Post.
#pragma once

#include <cstdint>
#include <functional>
#include <map>

#include "app/AppWorld.h"
#include "app/TickDriver.h"
#include "platform/posix/PosixMainLoop.h"

namespace kalvex::kalvexd {

// Timers beside those of the main frame and of the network.
enum ServiceTimer : int { StatusTimer = 101, WatchdogTimer, MemoryTimer };

class ServiceLoop final : public app::AppLoop {
  public:
    // Made before any other thread.
    ServiceLoop();

    void Post(std::function<void()> work) override { m_loop.Post(std::move(work)); }
    bool SetTimer(int id, std::int64_t milliseconds, std::function<void()> work) override;
    void KillTimer(int id) override;
    void SetTickSource(app::TickSource* source) override { m_ticks.SetSource(source); }
    void Quit() override { m_loop.Quit(); }

    void OnSignal(int signal, std::function<void()> handler) {
        m_loop.OnSignal(signal, std::move(handler));
    }
    app::TickDriver& Ticks() { return m_ticks; }
    void Run() { m_loop.Run(); }

  private:
    platform::PosixMainLoop m_loop;
    app::TickDriver m_ticks;
    std::map<int, int> m_timers;  // the loop's number of each but the ticks
};

}  // namespace kalvex::kalvexd
