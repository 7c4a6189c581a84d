#include "platform/posix/PosixMainLoop.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <utility>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

namespace {

// Takes the count off a descriptor that counts; false when it has counted nothing.
bool Drain(int descriptor) {
    std::uint64_t count;
    return ::read(descriptor, &count, sizeof count) > 0;
}

}  // namespace

PosixMainLoop::PosixMainLoop()
    : m_wakeFd(CheckedDescriptor(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))), m_work([this] {
          const std::uint64_t one = 1;
          // A full counter wakes as well.
          [[maybe_unused]] const ssize_t written = ::write(m_wakeFd, &one, sizeof one);
      }) {}

PosixMainLoop::~PosixMainLoop() {
    for (const auto& [descriptor, work] : m_timers) ::close(descriptor);
    ::close(m_wakeFd);
}

int PosixMainLoop::Every(std::int64_t milliseconds, std::function<void()> work) {
    const int timer =
        CheckedDescriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    const timespec period{milliseconds / 1000, (milliseconds % 1000) * 1'000'000};
    const itimerspec setting{period, period};
    CheckedDescriptor(::timerfd_settime(timer, 0, &setting, nullptr));
    m_timers[timer] = std::move(work);
    return timer;
}

void PosixMainLoop::Cancel(int timer) {
    if (m_timers.erase(timer) != 0) ::close(timer);
}

// Fills in what the descriptors have to tell; false when none has.
bool PosixMainLoop::Wait(std::vector<pollfd>& waits) {
    const std::optional<std::int64_t> most = m_beforeWait ? m_beforeWait() : std::nullopt;
    if (m_quit) return false;
    waits.assign(
        {{m_wakeFd, POLLIN, 0}, {m_signals.GetDescriptor(), POLLIN, 0}, {m_watched, POLLIN, 0}});
    for (const auto& [descriptor, work] : m_timers) waits.push_back({descriptor, POLLIN, 0});
    const std::int64_t microseconds = most.value_or(0);
    const timespec limit{microseconds / 1'000'000, microseconds % 1'000'000 * 1000};
    const int ready = ::ppoll(waits.data(), waits.size(), most ? &limit : nullptr, nullptr);
    m_readable = ready > 0 && waits[2].revents != 0;
    if (m_afterWait) m_afterWait();
    return ready > 0;
}

void PosixMainLoop::Run() {
    m_quit = false;
    std::vector<pollfd> waits;
    while (!m_quit) {
        if (!Wait(waits)) continue;
        if (waits[0].revents != 0) Drain(m_wakeFd);
        m_work.Run();
        if (waits[1].revents != 0) m_signals.Deliver();
        for (std::size_t index = 3; index < waits.size(); ++index) {
            if (waits[index].revents == 0) continue;
            // One may have been cancelled by what was called before it.
            const auto timer = m_timers.find(waits[index].fd);
            if (timer == m_timers.end() || !Drain(timer->first)) continue;
            const std::function<void()> work = timer->second;
            work();
        }
    }
}

}  // namespace kalvex::platform
