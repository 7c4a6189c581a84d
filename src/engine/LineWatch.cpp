#include "engine/LineWatch.h"

#include <algorithm>
#include <utility>

namespace kalvex::engine {

void LineWatch::Begin() {
    m_last = m_clocks.now();
    m_thread = m_clocks.thread();
}

// A line that waits for a disk or a program gives the processor up by itself.
std::int64_t LineWatch::OwnTime(std::int64_t took) {
    const platform::ThreadTime now = m_clocks.thread();
    const platform::ThreadTime before = std::exchange(m_thread, now);
    if (now.waits != before.waits) return took;
    return std::min(took, now.processor - before.processor);
}

}  // namespace kalvex::engine
