#include "programs/sorvaned/Printer.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>

#include "programs/ExitStatus.h"

namespace kalvex::sorvaned {

namespace {

constexpr std::size_t kTogether = std::size_t{64} << 10;
// A pipe that is ready takes so much without a wait.
constexpr std::size_t kPiece = PIPE_BUF;

constexpr const char* kNotWritten = platform::Translatable("Nie można pisać na wyjście (%s)");

}  // namespace

void Printer::Put(std::string_view text) {
    if (m_closed) return;
    m_text += text;
    if (m_text.size() >= kTogether) Flush();
}

bool Printer::Flush() {
    for (std::string_view rest = m_text; !m_closed && !rest.empty();) {
        const std::string_view piece = rest.substr(0, kPiece);
        m_closed = !Write(piece);
        rest.remove_prefix(piece.size());
    }
    m_text.clear();
    return !m_closed;
}

// A signal that is blocked elsewhere comes through while the reader is waited for.
bool Printer::Write(std::string_view piece) {
    sigset_t none;
    sigemptyset(&none);
    while (!piece.empty()) {
        pollfd output{STDOUT_FILENO, POLLOUT, 0};
        if (::ppoll(&output, 1, nullptr, &none) < 0) return false;
        const ssize_t written = ::write(STDOUT_FILENO, piece.data(), piece.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) {
            m_error = errno;
            return false;
        }
        piece.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

int Printer::End(const platform::Translator& translator) {
    Flush();
    if (m_error == 0 || m_error == EPIPE) return programs::ExitDone;
    std::cerr << platform::InWords({kNotWritten, {std::strerror(m_error)}}, translator) << '\n';
    return programs::ExitFailed;
}

}  // namespace kalvex::sorvaned
