#include "platform/Threads.h"

#include <pthread.h>

#include <csignal>
#include <future>
#include <string>
#include <system_error>
#include <vector>

namespace kalvex::platform {

namespace {

constexpr std::size_t kShownLength = 15;
constexpr unsigned kServiceThreads = 16;  // and as many for each processor as follows
constexpr unsigned kThreadsOfAProcessor = 2;

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

Notice CheckThreads() {
    const unsigned count =
        kServiceThreads + kThreadsOfAProcessor * std::thread::hardware_concurrency();
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    std::vector<std::thread> threads;
    bool refused = false;
    while (threads.size() < count && !refused) {
        std::thread thread = StartThread({"check"}, [ended] { ended.wait(); });
        refused = !thread.joinable();
        if (!refused) threads.push_back(std::move(thread));
    }
    end.set_value();
    for (std::thread& thread : threads) thread.join();
    if (!refused) return {};
    return {Translatable("Za mało wątków, potrzeba %s (TasksMax, ulimit -u)"),
            {std::to_string(count)}};
}

}  // namespace kalvex::platform
