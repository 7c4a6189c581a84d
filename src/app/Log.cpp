#include "app/Log.h"

#include <algorithm>

#include "platform/LogGap.h"
#include "text/CodePage.h"
#include "text/ControlText.h"
#include "value/LocalTimeText.h"

namespace kalvex::app {

std::string FormatLogLine(const LogMessage& message) {
    std::string line = value::FormatLocalTime(message.time);
    line.resize(kLogStampLength, ' ');
    return line + message.text;
}

void CLog::AddMessage(std::string_view text, std::int64_t time, int level) {
    if (m_messages.size() == kLines) m_messages.pop_front();
    const LogMessage& message =
        m_messages.emplace_back(LogMessage{time, level, text::EscapeControls(text)});
    if (m_lost > 0) {
        const std::string gap = platform::GapText(m_lost, m_translator);
        if (WriteLine({m_clock.Now(), platform::LogAlways, gap})) m_lost = 0;
    }
    if (m_lost > 0 || !WriteLine(message)) {
        ++m_lost;
        ++m_lostInAll;
    }
    if (m_listener != nullptr) m_listener->OnLogMessage(message);
}

void CLog::OnClear() {
    m_messages.clear();
    if (m_listener != nullptr) m_listener->OnLogCleared();
}

bool CLog::WriteLine(const LogMessage& message) {
    return m_file.Write(text::ToUtf8(FormatLogLine(message)));
}

std::string CLog::GetText(std::size_t index) const {
    return FormatLogLine(m_messages.at(index));
}

std::vector<LogMessage> CLog::GetLastMessages(std::size_t count) const {
    const std::size_t kept = std::min(count, m_messages.size());
    return {m_messages.end() - static_cast<std::ptrdiff_t>(kept), m_messages.end()};
}

void CLog::SetLogFile(std::string path, std::size_t maxBytes) {
    m_file.SetFile(std::move(path), maxBytes);
    m_lost = 0;
}

}  // namespace kalvex::app
