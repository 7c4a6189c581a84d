#include "platform/Threads.h"

#include <pthread.h>

#include <csignal>
#include <string>
#include <system_error>

namespace kalvex::platform {

namespace {

constexpr std::size_t kShownLength = 15;

thread_local ThreadIdentity t_identity;

class BlockedSignals {
  public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

  private:
    sigset_t m_before;
};

}  // namespace

void SetThreadIdentity(const ThreadIdentity& identity) {
    t_identity = identity;
    const std::string shown = std::string(identity.name).substr(0, kShownLength);
    pthread_setname_np(pthread_self(), shown.c_str());
}

const ThreadIdentity& GetThreadIdentity() {
    return t_identity;
}

std::thread StartThread(const ThreadIdentity& identity, std::function<void()> work) {
    const BlockedSignals blocked;
    try {
        return std::thread([identity, work = std::move(work)] {
            SetThreadIdentity(identity);
            work();
        });
    } catch (const std::system_error&) {
        return {};
    }
}

}  // namespace kalvex::platform
