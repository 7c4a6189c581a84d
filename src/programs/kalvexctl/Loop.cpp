#include "programs/kalvexctl/Loop.h"

#include <algorithm>
#include <csignal>

#include "platform/SteadyTime.h"
#include "vantrel/network/Patience.h"

namespace kalvex::kalvexctl {

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr std::int64_t kPeriod = 1000;  // milliseconds

}  // namespace

Loop::Loop() {
    for (const int signal : kEndingSignals) {
        m_loop.OnSignal(signal, [this, signal] {
            if (m_signal == 0) m_signal = signal;
        });
    }
    m_loop.Every(kPeriod, [this] { m_periodic(); });
    m_loop.AroundWait(
        [this] {
            const std::int64_t left = m_until - platform::SteadyMilliseconds();
            return std::clamp<std::int64_t>(left, 0, kPeriod) * 1000;
        },
        [this] { m_loop.Quit(); });
}

void Loop::Turn(std::int64_t until, int descriptor) {
    m_until = until;
    m_loop.Watch(descriptor);
    m_loop.Run();
}

}  // namespace kalvex::kalvexctl
