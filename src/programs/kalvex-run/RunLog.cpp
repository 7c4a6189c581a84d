#include "programs/kalvex-run/RunLog.h"

#include <fmt/format.h>

#include "text/CodePage.h"
#include "text/ControlText.h"
#include "value/LocalTimeText.h"

namespace kalvex::run {

void RunLog::Log(std::string_view text, int level) {
    if (level > m_level) return;
    const std::int64_t now = m_clock.Now();
    if (m_out == nullptr) {
        m_entries.push_back({now, level, text::ToUtf8(text)});
        return;
    }
    const std::string line = fmt::format("{} {}\n", value::FormatLocalTime(now),
                                         text::ToUtf8(text::EscapeControls(text)));
    std::fwrite(line.data(), 1, line.size(), m_out);
    std::fflush(m_out);
}

}  // namespace kalvex::run
