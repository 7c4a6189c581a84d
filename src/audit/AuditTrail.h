// Who changed what in a module, in files of its own; docs/operations.md has the lines. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "audit/AuditRecord.h"
#include "platform/Clock.h"
#include "platform/LogSink.h"
#include "platform/Translator.h"
#include "platform/posix/Descriptor.h"

namespace kalvex::audit {

class AuditTrail {
  public:
    // An older file goes when its last line is from before that; looked at when files are turned
    // over and with the first record of each day.
    static constexpr std::int64_t kKeptDays = 400;

    // Nothing referred to is owned; all of it outlives the trail.
    AuditTrail(const platform::Clock& clock, const platform::Translator& translator,
               platform::LogSink& log)
        : m_clock(clock), m_translator(translator), m_log(log) {}
    // Tries once more to write how many records were lost.
    ~AuditTrail();
    AuditTrail(const AuditTrail&) = delete;
    AuditTrail& operator=(const AuditTrail&) = delete;

    // Records go to the file `name`, ".log" behind it, from now on; it is turned over before it has
    // more than so many bytes. An empty name, or a limit of 0, writes nowhere.
    void SetFile(std::string name, std::size_t maxBytes);
    const std::string& GetName() const { return m_name; }

    // Whether a record could be written now, as far as the file opens; else the system's words in
    // `error`. True as well where records go nowhere.
    bool CanOpen(std::string& error);

    // Writes a record with the time that it is now. Its line is in the file as a whole or not at
    // all; what cannot be written is counted, and the number is written, in front of the next
    // record, when there is room again. The log hears of the first record that is lost.
    void Add(const AuditRecord& record);

    // Lets go of the file, so that the next record goes to the one that bears the name then.
    void Reopen() { m_file = platform::Descriptor(-1); }

  private:
    bool Open();
    std::string LostLine() const;
    bool Write(std::string_view lines);
    void RemoveOldFiles();

    const platform::Clock& m_clock;
    const platform::Translator& m_translator;
    platform::LogSink& m_log;
    std::string m_name;
    std::size_t m_maxBytes = 0;
    platform::Descriptor m_file{-1};
    std::int64_t m_day = -1;  // when old files were looked for
    std::uint64_t m_lost = 0;
};

}  // namespace kalvex::audit
