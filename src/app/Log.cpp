#include "app/Log.h"

#include <algorithm>

#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "value/LocalTimeText.h"

namespace kalvex::app {

std::string FormatLogLine(const CLogMessage& message) {
    std::string line = value::FormatLocalTime(message.time);
    line.resize(kLogStampLength, ' ');
    return line + message.text;
}

void CLog::AddMessage(std::string_view text, std::int64_t time, int level) {
    if (m_arrMessages.size() == kLines) m_arrMessages.pop_front();
    const CLogMessage& message =
        m_arrMessages.emplace_back(CLogMessage{time, level, std::string(text)});
    if (m_nLost > 0) {
        const std::string gap = text::FormatText(
            m_translator.Translate("Pominięte wiersze rejestru: %s"), {std::to_string(m_nLost)});
        if (WriteLine({m_clock.Now(), platform::LogAlways, gap})) m_nLost = 0;
    }
    if (m_nLost > 0 || !WriteLine(message)) ++m_nLost;
    if (m_pListener != nullptr) m_pListener->OnLogMessage(message);
}

bool CLog::WriteLine(const CLogMessage& message) {
    return m_file.Write(text::ToUtf8(FormatLogLine(message)));
}

std::string CLog::GetText(std::size_t index) const {
    return FormatLogLine(m_arrMessages.at(index));
}

std::vector<CLogMessage> CLog::GetLastMessages(std::size_t count) const {
    const std::size_t kept = std::min(count, m_arrMessages.size());
    return {m_arrMessages.end() - static_cast<std::ptrdiff_t>(kept), m_arrMessages.end()};
}

void CLog::SetLogFile(std::string path, std::size_t maxBytes) {
    m_file.SetFile(std::move(path), maxBytes);
    m_nLost = 0;
}

}  // namespace kalvex::app
