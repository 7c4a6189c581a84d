#include "programs/PasswordPrompt.h"

#include <unistd.h>

#include <iostream>

#include "platform/PasswordHash.h"
#include "programs/SilentTerminal.h"
#include "text/CodePage.h"

namespace kalvex::programs {

namespace {

std::string Prompt(const platform::Translator& translator) {
    return translator.Translate("Hasło: ");
}

bool AskOnce(const std::string& question, std::string& password) {
    std::cerr << text::ToUtf8(question) << std::flush;
    const bool answered = static_cast<bool>(std::getline(std::cin, password));
    std::cerr << "\n";
    return answered;
}

}  // namespace

bool AskOwnPassword(std::string& password, const platform::Translator& translator) {
    if (::isatty(STDIN_FILENO) == 0) return static_cast<bool>(std::getline(std::cin, password));
    const SilentTerminal silent(STDIN_FILENO);
    return AskOnce(Prompt(translator), password);
}

bool AskPassword(std::string& password, const platform::Translator& translator) {
    if (::isatty(STDIN_FILENO) == 0) return static_cast<bool>(std::getline(std::cin, password));
    const SilentTerminal silent(STDIN_FILENO);
    std::string again;
    for (;;) {
        if (!AskOnce(Prompt(translator), password) ||
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
