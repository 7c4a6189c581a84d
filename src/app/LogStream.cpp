#include "app/LogStream.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "platform/LogGap.h"
#include "text/CodePage.h"

namespace kalvex::app {

namespace {

// The priorities of syslog, by the level of the line; the last for all levels above.
constexpr int kPriorities[] = {5, 3, 6, 7};

}  // namespace

// Programs that a service of the journal starts inherit the variable, but not the stream.
LogStreamForm FormOf(int descriptor) {
    const char* journal = std::getenv("JOURNAL_STREAM");
    struct stat info {};
    const bool same = journal != nullptr && ::fstat(descriptor, &info) == 0 &&
                      fmt::format("{}:{}", info.st_dev, info.st_ino) == journal;
    return same ? LogStreamForm::Priority : LogStreamForm::Stamped;
}

LogStream::LogStream(int descriptor, LogStreamForm form, const platform::Clock& clock,
                     const platform::Translator& translator)
    : m_form(form), m_writer(descriptor, [this, &clock, &translator](std::uint64_t lost) {
          return LineOf({clock.Now(), platform::LogAlways, platform::GapText(lost, translator)});
      }) {}

std::string LogStream::LineOf(const LogMessage& message) const {
    const int highest = static_cast<int>(std::size(kPriorities)) - 1;
    const std::string line =
        m_form == LogStreamForm::Stamped
            ? FormatLogLine(message)
            : fmt::format("<{}>{}", kPriorities[std::clamp(message.level, 0, highest)],
                          message.text);
    return text::ToUtf8(line);
}

}  // namespace kalvex::app
