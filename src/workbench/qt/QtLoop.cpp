#include "workbench/qt/QtLoop.h"

#include <sys/timerfd.h>

#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <optional>

namespace kalvex::window {

namespace {

constexpr std::int64_t kLeastPeriod = 10;  // milliseconds
// Ticks that are late are made up for no longer than this before the window has its turn.
constexpr std::chrono::milliseconds kLongestBurst{8};

}  // namespace

QtLoop::QtLoop(std::function<std::int64_t()> clock)
    : m_work([this] {
          QMetaObject::invokeMethod(
              &m_receiver, [this] { Turn([this] { m_work.Run(); }); }, Qt::QueuedConnection);
      }),
      m_ticks(std::move(clock)),
      m_tickTimer(platform::CheckedDescriptor(
          ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))),
      m_tickNotifier(m_tickTimer.Get(), QSocketNotifier::Read) {
    QObject::connect(&m_tickNotifier, &QSocketNotifier::activated, &m_receiver,
                     [this] { Turn([] {}); });
}

bool QtLoop::SetTimer(int id, std::int64_t milliseconds, std::function<void()> work) {
    auto timer = std::make_unique<QTimer>();
    timer->setInterval(static_cast<int>(std::max(milliseconds, kLeastPeriod)));
    QObject::connect(timer.get(), &QTimer::timeout, &m_receiver,
                     [this, work = std::move(work)] { Turn(work); });
    timer->start();
    KillTimer(id);
    m_timers[id] = std::move(timer);
    return true;
}

// A timer may end itself, from within its work.
void QtLoop::KillTimer(int id) {
    const auto timer = m_timers.find(id);
    if (timer == m_timers.end()) return;
    timer->second->stop();
    timer->second.release()->deleteLater();
    m_timers.erase(timer);
}

void QtLoop::SetTickSource(app::TickSource* source) {
    m_ticks.SetSource(source);
    Arm(0);
}

void QtLoop::Quit() {
    m_quit = true;
    QCoreApplication::quit();
}

void QtLoop::OnSignal(int signal, std::function<void()> handler) {
    m_signals.OnSignal(signal, std::move(handler));
    if (m_signalNotifier) return;
    m_signalNotifier =
        std::make_unique<QSocketNotifier>(m_signals.GetDescriptor(), QSocketNotifier::Read);
    QObject::connect(m_signalNotifier.get(), &QSocketNotifier::activated, &m_receiver,
                     [this] { Turn([this] { m_signals.Deliver(); }); });
}

void QtLoop::Run() {
    if (!m_quit) QCoreApplication::exec();
}

void QtLoop::Turn(const std::function<void()>& work) {
    m_ticks.OnWake();
    work();
    RunDueTicks();
}

void QtLoop::RunDueTicks() {
    const auto end = std::chrono::steady_clock::now() + kLongestBurst;
    std::optional<std::int64_t> wait;
    do {
        wait = m_ticks.OnTurn();
    } while (wait && *wait == 0 && std::chrono::steady_clock::now() < end);
    if (wait) Arm(*wait);
}

// A setting of 0 would disarm.
void QtLoop::Arm(std::int64_t microseconds) {
    const std::int64_t nanoseconds = std::max<std::int64_t>(microseconds * 1000, 1);
    itimerspec setting{};
    setting.it_value = {nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    ::timerfd_settime(m_tickTimer.Get(), 0, &setting, nullptr);
}

}  // namespace kalvex::window
