#include "app/KalvexLog.h"

#include "app/Configuration.h"
#include "text/ControlText.h"

namespace kalvex::app {

namespace {

struct LevelRow {
    int level;
    const char* word;
};

constexpr LevelRow kLevels[] = {
    {platform::LogErrors, "błędy "},
    {platform::LogEvents, "zdarzenia"},
    {platform::LogTransmission, "transmisja"},
};

}  // namespace

void CKalvexLog::BecomeConsoleClient() {
    m_consoleClient = true;
    m_level = kLogLevelOfModule;
}

std::string CKalvexLog::Prefixed(std::string_view text) const {
    return (m_consoleClient ? "RC: " : "") + text::EscapeControls(text);
}

void CKalvexLog::Log(std::string_view text, int level) {
    if (!m_consoleClient && level > m_level) return;
    const std::int64_t time = m_clock.Now();
    const std::string line = Prefixed(text);
    if (!m_consoleClient && m_clients != nullptr) m_clients->AddLogMessage(line, time, level);
    AddMessage(line, time, level);
    if (m_outlets != nullptr) m_outlets->ShowStatusLine(line);
}

void CKalvexLog::LogAlways(std::string_view text) {
    AddMessage(Prefixed(text), platform::LogAlways);
}

void CKalvexLog::LogFromModule(std::string_view text, std::int64_t time, int level) {
    if (!m_consoleClient || m_outlets == nullptr) return;
    AddMessage(text, time, level);
    m_outlets->ShowStatusLine(text::EscapeControls(text));
}

std::string CKalvexLog::GetLevelWord() const {
    for (const LevelRow& row : kLevels) {
        if (row.level == m_level) return m_translator.Translate(row.word);
    }
    return {};
}

void CKalvexLog::PublishLevel() {
    if (!m_consoleClient) {
        Log(m_translator.Translate("Poziom rejestracji: ") + GetLevelWord(), platform::LogAlways);
    }
    if (m_outlets != nullptr) m_outlets->OnLogLevel(m_level);
}

}  // namespace kalvex::app
