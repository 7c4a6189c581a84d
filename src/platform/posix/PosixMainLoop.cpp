#include "platform/posix/PosixMainLoop.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace kalvex {

namespace {

int Checked(int descriptor) {
    if (descriptor >= 0) return descriptor;
    std::perror("main loop");
    std::exit(EXIT_FAILURE);
}

// Takes the count off a descriptor that counts.
void Drain(int descriptor) {
    std::uint64_t count;
    while (::read(descriptor, &count, sizeof count) > 0) {
    }
}

}  // namespace

PosixMainLoop::PosixMainLoop()
    : m_fdWake(Checked(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))), m_fdSignals(-1), m_work([this] {
          const std::uint64_t one = 1;
          // A full counter wakes as well.
          [[maybe_unused]] const ssize_t written = ::write(m_fdWake, &one, sizeof one);
      }) {
    sigemptyset(&m_signals);
}

PosixMainLoop::~PosixMainLoop() {
    for (const auto& [descriptor, work] : m_mapTimers) ::close(descriptor);
    if (m_fdSignals >= 0) ::close(m_fdSignals);
    ::close(m_fdWake);
}

void PosixMainLoop::OnSignal(int signal, std::function<void()> handler) {
    sigaddset(&m_signals, signal);
    pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    m_fdSignals = Checked(::signalfd(m_fdSignals, &m_signals, SFD_NONBLOCK | SFD_CLOEXEC));
    m_mapSignals[signal] = std::move(handler);
}

void PosixMainLoop::Every(std::int64_t milliseconds, std::function<void()> work) {
    const int timer = Checked(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    const timespec period{milliseconds / 1000, (milliseconds % 1000) * 1'000'000};
    const itimerspec setting{period, period};
    Checked(::timerfd_settime(timer, 0, &setting, nullptr));
    m_mapTimers[timer] = std::move(work);
}

void PosixMainLoop::ReadSignals() {
    signalfd_siginfo info;
    while (::read(m_fdSignals, &info, sizeof info) == sizeof info) {
        m_mapSignals.at(static_cast<int>(info.ssi_signo))();
    }
}

void PosixMainLoop::Run() {
    m_fQuit = false;
    while (!m_fQuit) {
        std::vector<pollfd> waits{{m_fdWake, POLLIN, 0}, {m_fdSignals, POLLIN, 0}};
        for (const auto& [descriptor, work] : m_mapTimers) waits.push_back({descriptor, POLLIN, 0});
        if (::poll(waits.data(), waits.size(), -1) <= 0) continue;
        if (waits[0].revents != 0) Drain(m_fdWake);
        m_work.Run();
        if (waits[1].revents != 0) ReadSignals();
        for (std::size_t index = 2; index < waits.size(); ++index) {
            if (waits[index].revents == 0) continue;
            Drain(waits[index].fd);
            m_mapTimers.at(waits[index].fd)();
        }
    }
}

}  // namespace kalvex
