#include "programs/sorvaned/ServerLog.h"

#include "platform/LogGap.h"
#include "text/CodePage.h"
#include "text/ControlText.h"
#include "value/LocalTimeText.h"

namespace kalvex::sorvaned {

namespace {

std::string LineOf(std::string_view text, const platform::Clock& clock) {
    return value::FormatLocalTime(clock.Now()) + ' ' + text::ToUtf8(text::EscapeControls(text));
}

}  // namespace

ServerLog::ServerLog(int descriptor, int level, const platform::Clock& clock,
                     const platform::Translator& translator)
    : m_clock(clock), m_level(level), m_writer(descriptor, [&clock, &translator](auto lost) {
          return LineOf(platform::GapText(lost, translator), clock);
      }) {}

void ServerLog::Log(std::string_view text, int level) {
    if (level <= m_level) m_writer.Write(LineOf(text, m_clock));
}

void ServerLog::Tell(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) m_writer.Write(line);
}

}  // namespace kalvex::sorvaned
