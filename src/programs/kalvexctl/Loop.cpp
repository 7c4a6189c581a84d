#include "programs/kalvexctl/Loop.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace kalvex::kalvexctl {

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr std::int64_t kPeriod = 1000;  // milliseconds

int Checked(int descriptor) {
    if (descriptor >= 0) return descriptor;
    std::perror("kalvexctl");
    std::exit(EXIT_FAILURE);
}

}  // namespace

Loop::Loop()
    : m_wakeFd(Checked(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))), m_work([this] {
          const std::uint64_t one = 1;
          [[maybe_unused]] const ssize_t written = ::write(m_wakeFd, &one, sizeof one);
      }) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kEndingSignals) sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_signalsFd = Checked(::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
}

Loop::~Loop() {
    ::close(m_signalsFd);
    ::close(m_wakeFd);
}

std::int64_t Loop::Now() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

void Loop::ReadSignals() {
    signalfd_siginfo info;
    while (::read(m_signalsFd, &info, sizeof info) == sizeof info) {
        if (m_signal == 0) m_signal = static_cast<int>(info.ssi_signo);
    }
}

void Loop::Turn(std::int64_t until, int descriptor) {
    pollfd waits[] = {{m_wakeFd, POLLIN, 0}, {m_signalsFd, POLLIN, 0}, {descriptor, POLLIN, 0}};
    const std::int64_t end = std::min(until, m_nextPeriodic);
    const int limit = static_cast<int>(std::clamp<std::int64_t>(end - Now(), 0, kPeriod));
    const bool ready = ::poll(waits, std::size(waits), limit) > 0;
    m_readable = ready && waits[2].revents != 0;
    if (ready && waits[0].revents != 0) {
        std::uint64_t count;
        [[maybe_unused]] const ssize_t taken = ::read(m_wakeFd, &count, sizeof count);
    }
    ReadSignals();
    m_work.Run();
    if (Now() < m_nextPeriodic) return;
    m_nextPeriodic = Now() + kPeriod;
    m_periodic();
}

}  // namespace kalvex::kalvexctl
