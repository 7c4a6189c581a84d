#include "programs/PasswordPrompt.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>

#include "platform/PasswordHash.h"
#include "text/CodePage.h"

namespace kalvex::programs {

namespace {

// The terminal shows nothing of what is typed.
class SilentTerminal {
  public:
    SilentTerminal() {
        ::tcgetattr(STDIN_FILENO, &m_before);
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~SilentTerminal() { ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before); }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

  private:
    termios m_before;
};

bool AskOnce(const std::string& question, std::string& password) {
    std::cerr << text::ToUtf8(question) << std::flush;
    const bool answered = static_cast<bool>(std::getline(std::cin, password));
    std::cerr << "\n";
    return answered;
}

}  // namespace

bool AskPassword(std::string& password, const platform::Translator& translator) {
    if (::isatty(STDIN_FILENO) == 0) return static_cast<bool>(std::getline(std::cin, password));
    const SilentTerminal silent;
    std::string again;
    for (;;) {
        if (!AskOnce(translator.Translate("Hasło: "), password) ||
            !AskOnce(translator.Translate("Hasło ponownie: "), again)) {
            return false;
        }
        const bool same = password == again;
        platform::WipePassword(again);
        if (same) return true;
        std::cerr << text::ToUtf8(translator.Translate("Hasła różnią się")) << '\n';
    }
}

}  // namespace kalvex::programs
