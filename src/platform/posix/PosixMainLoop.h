// The main loop of a program: posted work, periodic work, signals. Main thread, but for Post.
#pragma once

#include <poll.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "platform/MainLoop.h"
#include "platform/posix/SignalQueue.h"

namespace kalvex::platform {

class PosixMainLoop final : public MainLoop {
  public:
    // Made before any other thread, so that all threads inherit the blocking of the signals. The
    // system refuses descriptors only when it is out of them; the program then ends.
    PosixMainLoop();
    ~PosixMainLoop() override;
    PosixMainLoop(const PosixMainLoop&) = delete;
    PosixMainLoop& operator=(const PosixMainLoop&) = delete;

    void Post(std::function<void()> work) override { m_work.Post(std::move(work)); }

    // From now on the signal calls the handler instead of what the system does with it.
    void OnSignal(int signal, std::function<void()> handler) {
        m_signals.OnSignal(signal, std::move(handler));
    }

    // Calls `work` every so many milliseconds while Run lasts, until it is cancelled by the number
    // that this gives. A call that comes late is not made up for.
    int Every(std::int64_t milliseconds, std::function<void()> work);
    void Cancel(int timer);

    // Calls `before` before each wait; it answers for how many microseconds the loop may wait at
    // most, and with nothing for as long as it likes. Calls `after` when the wait is over, before
    // anything else.
    void AroundWait(std::function<std::optional<std::int64_t>()> before,
                    std::function<void()> after) {
        m_beforeWait = std::move(before);
        m_afterWait = std::move(after);
    }

    // A wait ends as well when the descriptor can be read or has come to its end; -1: none.
    void Watch(int descriptor) { m_watched = descriptor; }
    // Whether the last wait has found it so.
    bool IsReadable() const { return m_readable; }

    // Until Quit has been called from within.
    void Run();
    void Quit() { m_quit = true; }

  private:
    bool Wait(std::vector<pollfd>& waits);

    int m_wakeFd;
    int m_watched = -1;
    bool m_readable = false;
    bool m_quit = false;
    SignalQueue m_signals;
    std::map<int, std::function<void()>> m_timers;  // by descriptor
    std::function<std::optional<std::int64_t>()> m_beforeWait;
    std::function<void()> m_afterWait;
    PostedWork m_work;
};

}  // namespace kalvex::platform
