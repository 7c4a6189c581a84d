// The loop of a process with a window: the toolkit's events, and between them the ticks of the
// scripts, posted work, timers and signals. A box that stands open stops none of it. Main thread,
// but for Post.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>

#include "app/AppWorld.h"
#include "app/TickDriver.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SignalQueue.h"

namespace kalvex::window {

class QtLoop final : public app::AppLoop {
  public:
    // Made behind the application of the toolkit and before any other thread. The clock is one that
    // nobody sets, in microseconds.
    explicit QtLoop(std::function<std::int64_t()> clock);

    void Post(std::function<void()> work) override { m_work.Post(std::move(work)); }
    bool SetTimer(int id, std::int64_t milliseconds, std::function<void()> work) override;
    void KillTimer(int id) override;
    void SetTickSource(app::TickSource* source) override;
    void Quit() override;

    void OnSignal(int signal, std::function<void()> handler);
    app::TickDriver& Ticks() { return m_ticks; }
    // Until Quit; with a Quit that came before there is nothing to do.
    void Run();
    bool HasQuit() const { return m_quit; }

    // What acts on scripts is done here, so that it finds them as of now and the next tick comes in
    // time: the commands of the person.
    void Turn(const std::function<void()>& work);

  private:
    void RunDueTicks();
    void Arm(std::int64_t microseconds);

    QObject m_receiver;
    platform::PostedWork m_work;
    app::TickDriver m_ticks;
    platform::SignalQueue m_signals;
    std::unique_ptr<QSocketNotifier> m_signalNotifier;
    platform::Descriptor m_tickTimer;
    QSocketNotifier m_tickNotifier;
    std::map<int, std::unique_ptr<QTimer>> m_timers;
    bool m_quit = false;
};

}  // namespace kalvex::window
