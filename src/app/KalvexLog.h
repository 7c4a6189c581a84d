// The log of a module, or of a console client that shows that of its module. Main thread. Texts are
// engine texts.
#pragma once

#include <string>

#include "app/Log.h"

namespace kalvex::app {

// What a log does in its process beside keeping its lines.
class LogOutlets {
  public:
    virtual ~LogOutlets() = default;
    virtual void ShowStatusLine(std::string_view text) = 0;
    // The level has been set: the profile of a module keeps it, a console client asks for it.
    virtual void OnLogLevel(int level) = 0;
};

// The clients of a module that hear of its lines.
class LogClients {
  public:
    virtual ~LogClients() = default;
    virtual void AddLogMessage(std::string_view text, std::int64_t time, int level) = 0;
};

class CKalvexLog final : public CLog, public platform::LogSink {
  public:
    // The log of a module.
    CKalvexLog(const platform::Clock& clock, const platform::Translator& translator)
        : CLog(clock, translator) {}

    // From now on it is that of a console client, which filters nothing until it has heard the
    // level of its module.
    void BecomeConsoleClient();

    // None by default; not owned.
    void SetOutlets(LogOutlets* outlets) { m_outlets = outlets; }
    void SetClients(LogClients* clients) { m_clients = clients; }

    // Above the level of a module nothing happens.
    void Log(std::string_view text, int level) override;
    // At any level, for this process alone.
    void LogAlways(std::string_view text);
    // A line of the module with its time, in a console client.
    void LogFromModule(std::string_view text, std::int64_t time, int level);

    int GetLevel() const { return m_level; }
    // As the log tells it; empty for other numbers than those of the levels.
    std::string GetLevelWord() const;
    void SetLevel(int level) { m_level = level; }
    // Tells the level; in a module the log has a line of it, without a name for other numbers.
    void PublishLevel();

  private:
    std::string Prefixed(std::string_view text) const;

    bool m_consoleClient = false;
    int m_level = platform::LogErrors;
    LogOutlets* m_outlets = nullptr;
    LogClients* m_clients = nullptr;
};

}  // namespace kalvex::app
