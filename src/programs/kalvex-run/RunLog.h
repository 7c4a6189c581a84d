// The log of a run: kept for the result, or printed as it comes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Clock.h"
#include "platform/LogSink.h"

namespace kalvex::run {

struct LogEntry {
    std::int64_t time;  // seconds since 1970 GMT
    int level;
    std::string text;  // UTF-8
};

class RunLog final : public platform::LogSink {
  public:
    // Lines above `level` are dropped. With `out` (not owned) each line is printed there at once
    // and not kept.
    RunLog(const platform::Clock& clock, int level, std::FILE* out)
        : m_clock(clock), m_level(level), m_out(out) {}

    void Log(std::string_view text, int level) override;

    const std::vector<LogEntry>& Entries() const { return m_entries; }

  private:
    const platform::Clock& m_clock;
    int m_level;
    std::FILE* m_out;
    std::vector<LogEntry> m_entries;
};

}  // namespace kalvex::run
