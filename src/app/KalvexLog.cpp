#include "app/KalvexLog.h"

#include "app/Configuration.h"

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
    m_bConsoleClient = true;
    m_nLevel = kLogLevelOfModule;
}

std::string CKalvexLog::Prefixed(std::string_view text) const {
    return (m_bConsoleClient ? "RC: " : "") + std::string(text);
}

void CKalvexLog::Log(std::string_view text, int level) {
    if (!m_bConsoleClient && level > m_nLevel) return;
    const std::int64_t time = m_clock.Now();
    const std::string line = Prefixed(text);
    if (!m_bConsoleClient && m_pClients != nullptr) m_pClients->AddLogMessage(line, time, level);
    AddMessage(line, time, level);
    if (m_pOutlets != nullptr) m_pOutlets->ShowStatusLine(line);
}

void CKalvexLog::LogAlways(std::string_view text) {
    AddMessage(Prefixed(text), platform::LogAlways);
}

void CKalvexLog::LogFromModule(std::string_view text, std::int64_t time, int level) {
    if (!m_bConsoleClient || m_pOutlets == nullptr) return;
    AddMessage(text, time, level);
    m_pOutlets->ShowStatusLine(text);
}

void CKalvexLog::PublishLevel() {
    std::string line = m_translator.Translate("Poziom rejestracji: ");
    for (const LevelRow& row : kLevels) {
        if (row.level == m_nLevel) line += m_translator.Translate(row.word);
    }
    Log(line, platform::LogAlways);
    if (m_pOutlets != nullptr) m_pOutlets->OnLogLevel(m_nLevel);
}

}  // namespace kalvex::app
