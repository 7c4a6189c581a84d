#include "server/ClientText.h"

#include <algorithm>

#include "text/Characters.h"
#include "text/CodePage.h"

namespace kalvex {

namespace {

constexpr std::size_t kLongestName = 255;

constexpr const char* kLogin = "Rejestracja użytkownika ";
constexpr const char* kLoginTry = "Próba rejestracji użytkownika ";
constexpr const char* kFrom = " z ";

// Bytes that would break a log line become "?".
std::string Printable(std::string_view name) {
    std::string text(name.substr(0, kLongestName));
    std::replace_if(text.begin(), text.end(), IsControl, '?');
    return text;
}

}  // namespace

std::string ClientText(std::string_view name, const std::string& address) {
    return Printable(name) + (address.empty() ? "" : " (" + address + ")");
}

std::string LoginLine(const LoginVerdict& verdict, std::string_view user,
                      const std::string& client) {
    const bool accepted = verdict.code == LoginOk;
    const std::string name = Printable(accepted ? std::string_view(verdict.user.name) : user);
    std::string line = FromUtf8(accepted ? kLogin : kLoginTry) + name + kFrom + client;
    if (!accepted) line += " - " + verdict.text;
    return line;
}

}  // namespace kalvex
