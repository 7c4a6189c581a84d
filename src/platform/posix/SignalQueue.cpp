#include "platform/posix/SignalQueue.h"

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <utility>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

SignalQueue::~SignalQueue() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

void SignalQueue::OnSignal(int signal, std::function<void()> handler) {
    sigaddset(&m_signals, signal);
    pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    m_descriptor =
        CheckedDescriptor(::signalfd(m_descriptor, &m_signals, SFD_NONBLOCK | SFD_CLOEXEC));
    m_handlers[signal] = std::move(handler);
}

bool SignalQueue::IsPending(int signal) {
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, signal) == 1;
}

void SignalQueue::Deliver() {
    signalfd_siginfo info;
    while (::read(m_descriptor, &info, sizeof info) == sizeof info) {
        m_handlers.at(static_cast<int>(info.ssi_signo))();
    }
}

}  // namespace kalvex::platform
