#include "programs/kalvex-run/Interruption.h"

#include <csignal>

namespace kalvex::run {

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

}  // namespace

void WatchInterruption() {
    struct sigaction action {};
    action.sa_handler = [](int) { g_interrupted = 1; };
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool IsInterrupted() {
    return g_interrupted != 0;
}

}  // namespace kalvex::run
