#include "programs/kalvex-run/RunLog.h"

#include <fmt/format.h>

#include "text/CodePage.h"
#include "value/LocalTimeText.h"

namespace kalvex::run {

void CRunLog::Log(std::string_view text, int level) {
    if (level > m_nLevel) return;
    const std::int64_t now = m_clock.Now();
    if (m_pOut == nullptr) {
        m_arrEntries.push_back({now, level, text::ToUtf8(text)});
        return;
    }
    const std::string line =
        fmt::format("{} {}\n", value::FormatLocalTime(now), text::ToUtf8(text));
    std::fwrite(line.data(), 1, line.size(), m_pOut);
    std::fflush(m_pOut);
}

}  // namespace kalvex::run
