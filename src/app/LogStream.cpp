#include "app/LogStream.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

#include "text/CodePage.h"

namespace kalvex::app {

namespace {

// The priorities of syslog, by the level of the line; the last for all levels above.
constexpr int kPriorities[] = {5, 3, 6, 7};

}  // namespace

LogStreamForm FormOfStandardOutput() {
    return std::getenv("JOURNAL_STREAM") != nullptr ? LogStreamForm::Priority
                                                    : LogStreamForm::Stamped;
}

void LogStream::OnLogMessage(const LogMessage& message) {
    const int highest = static_cast<int>(std::size(kPriorities)) - 1;
    std::string line =
        m_form == LogStreamForm::Stamped
            ? FormatLogLine(message)
            : fmt::format("<{}>{}", kPriorities[std::clamp(message.level, 0, highest)],
                          message.text);
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    line = text::ToUtf8(line) + '\n';
    std::fwrite(line.data(), 1, line.size(), m_stream);
    std::fflush(m_stream);
}

}  // namespace kalvex::app
