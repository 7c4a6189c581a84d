// The application log: the last lines in memory, all of them in a file. Main thread. Texts are
// engine texts; what leaves the process is UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Clock.h"
#include "platform/LogFile.h"
#include "platform/LogSink.h"
#include "platform/Translator.h"

namespace kalvex::app {

// The length of the time stamp that a line begins with: "2024-03-10 07:00:00  ".
inline constexpr std::size_t kLogStampLength = 21;

struct LogMessage {
    std::int64_t time;
    int level;
    std::string text;
};

// Hears of each line as it comes, and when they are cleared; the file, and what else there is, know
// nothing of each other.
class LogListener {
  public:
    virtual ~LogListener() = default;
    virtual void OnLogMessage(const LogMessage& message) = 0;
    virtual void OnLogCleared() {}
};

class CLog {
  public:
    static constexpr std::size_t kLines = 10000;  // that are kept in memory

    // Nothing referred to is owned; all of it outlives the log.
    CLog(const platform::Clock& clock, const platform::Translator& translator)
        : m_clock(clock), m_translator(translator), m_file(clock) {}

    void AddMessage(std::string_view text, int level) { AddMessage(text, m_clock.Now(), level); }
    void AddMessage(std::string_view text, std::int64_t time, int level);

    // The line with its stamp; index from 0, the oldest that is kept.
    std::string GetText(std::size_t index) const;
    int GetLevelOf(std::size_t index) const { return m_messages.at(index).level; }
    std::size_t GetCount() const { return m_messages.size(); }
    // The newest, at most so many, oldest first.
    std::vector<LogMessage> GetLastMessages(std::size_t count) const;
    // Of memory; the file keeps what it has.
    void OnClear();

    // Lines go to `path`, ".log" behind it, from now on; see CLogFile. What could not be written is
    // counted, and told in the file when it can be written again.
    void SetLogFile(std::string path, std::size_t maxBytes);
    void ReopenLogFile() { m_file.Reopen(); }
    bool CanOpenLogFile(std::string& error) const { return m_file.CanOpen(error); }
    // Lines that could not be written to any of the files so far.
    std::uint64_t GetLostLines() const { return m_lostInAll; }

    // None by default; not owned.
    void SetListener(LogListener* listener) { m_listener = listener; }

  protected:
    const platform::Clock& m_clock;
    const platform::Translator& m_translator;

  private:
    bool WriteLine(const LogMessage& message);

    platform::CLogFile m_file;
    std::uint64_t m_lost = 0;  // since the last that was written
    std::uint64_t m_lostInAll = 0;
    std::deque<LogMessage> m_messages;
    LogListener* m_listener = nullptr;
};

// The line as it is shown.
std::string FormatLogLine(const LogMessage& message);

}  // namespace kalvex::app
