#include "server/ConfirmedTime.h"

#include <algorithm>
#include <cstdlib>

#include "value/LocalTime.h"

namespace kalvex::server {

namespace {

constexpr std::int64_t kTolerance = 60;

}  // namespace

std::int64_t ConfirmedTime::Step(std::int64_t now, std::int64_t elapsed) {
    const Reading last = m_last.value_or(Reading{now, elapsed});
    if (!m_last) m_expected = now;
    m_last = {now, elapsed};
    std::int64_t jump = now - last.now - (elapsed - last.elapsed);
    if (std::abs(jump) <= kTolerance) jump = 0;
    // The seconds of the two clocks do not begin together, so only a jump is told by the other one.
    m_passed = jump == 0 ? now - last.now : elapsed - last.elapsed;
    m_expected += m_passed;
    if (jump != 0) m_doubtedAt = elapsed;
    const bool agrees = std::abs(now - m_expected) <= kTolerance;
    if (agrees || (m_doubtedAt && elapsed - *m_doubtedAt >= value::kSecondsPerHour)) Trust();
    return jump;
}

void ConfirmedTime::Trust() {
    m_doubtedAt.reset();
    if (m_last) m_expected = m_last->now;
}

std::int64_t ConfirmedTime::Get() const {
    return m_last ? std::min(m_expected, m_last->now) : 0;
}

std::int64_t ConfirmedTime::At(std::int64_t now, std::int64_t elapsed) const {
    ConfirmedTime then = *this;
    then.Step(now, elapsed);
    return then.Get();
}

}  // namespace kalvex::server
