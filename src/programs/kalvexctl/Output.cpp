#include "programs/kalvexctl/Output.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/posix/RegularFile.h"
#include "text/CodePage.h"

namespace kalvex::kalvexctl {

namespace {

constexpr std::size_t kUsualWidth = 80;
constexpr const char* kCleared = "\033[H\033[2J";

bool IsSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

}  // namespace

bool IsStream(int descriptor) {
    struct stat info {};
    return ::fstat(descriptor, &info) == 0 && (info.st_mode & S_IFMT) != 0;
}

Output::Output()
    : m_isTerminal(::isatty(STDOUT_FILENO) == 1),
      m_isColoured(m_isTerminal && !IsSet("NO_COLOR")),
      m_closed(!IsStream(STDOUT_FILENO)) {
    if (m_closed) m_fault = std::strerror(EBADF);
}

Screen Output::GetScreen() const {
    winsize size{};
    const bool known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return {known ? size.ws_col : kUsualWidth, m_isColoured};
}

void Output::PrintText(std::string_view text) {
    if (m_closed || platform::WriteAll(STDOUT_FILENO, text)) return;
    m_closed = true;
    if (errno != EPIPE) m_fault = std::strerror(errno);
}

void Output::PrintTable(const std::vector<std::string>& head, const std::vector<Row>& rows) {
    if (m_isTerminal) {
        for (const std::string& line : ScreenLines(head, rows, GetScreen())) {
            PrintText(line + '\n');
        }
        return;
    }
    for (const Row& row : rows) PrintText(PipeLine(row.cells) + '\n');
}

void Output::PrintLine(std::string_view line) {
    PrintTable({}, {Row{{Cell{std::string(line)}}}});
}

void Output::Clear() {
    if (m_isTerminal) PrintText(kCleared);
}

void Output::Tell(const Ending& ending) {
    if (!ending.text.empty()) platform::WriteAll(STDERR_FILENO, "kalvexctl: " + ending.text + '\n');
}

void Output::Log(std::string_view text, int level) {
    if (level <= platform::LogErrors) Tell({programs::ExitFailed, text::ToUtf8(text)});
}

}  // namespace kalvex::kalvexctl
