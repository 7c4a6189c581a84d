// A log file that is turned over when it is full: NAME.log is the newest, NAME.1.log the one
// before. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Clock.h"

namespace kalvex::platform {

class CLogFile {
  public:
    // That are kept beside the newest.
    static constexpr std::size_t kOlderFiles = 9;

    // The clock outlives the file.
    explicit CLogFile(const Clock& clock);
    ~CLogFile();
    CLogFile(const CLogFile&) = delete;
    CLogFile& operator=(const CLogFile&) = delete;

    // `path` without the ending ".log"; an empty one, or a limit of 0, writes nowhere.
    void SetFile(std::string path, std::size_t maxBytes);

    // From now on tabs are no control characters.
    void KeepTabs() { m_keepsTabs = true; }

    // One line, without its end, in UTF-8; control characters in it are escaped. False when the
    // line is lost, because the disk is full or the like; then a second passes before the file is
    // tried again. True as well where lines go nowhere.
    bool Write(std::string_view line);

    // Whether a line could be written now, as far as the file opens; else the system's words in
    // `error`. True as well where lines go nowhere.
    bool CanOpen(std::string& error) const;

    // Lets go of the file, so that the next line goes to the one that bears the name then.
    void Reopen();

  private:
    class Sink;

    bool Open();

    const Clock& m_clock;
    std::string m_path;
    std::size_t m_maxBytes = 0;
    bool m_keepsTabs = false;
    std::unique_ptr<Sink> m_sink;
    std::int64_t m_failed = -1;  // the second of the last failure
};

}  // namespace kalvex::platform
