#include "server/ClientText.h"

#include <algorithm>

#include "text/Characters.h"
#include "text/TextFormat.h"

namespace kalvex::server {

namespace {

constexpr const char* kLogin = platform::Translatable("Rejestracja użytkownika %s z %s");
constexpr const char* kLoginTry =
    platform::Translatable("Próba rejestracji użytkownika %s z %s - %s");

}  // namespace

std::string Printable(std::string_view name) {
    constexpr std::size_t kLongestName = 255;
    std::string text(name.substr(0, kLongestName));
    std::replace_if(text.begin(), text.end(), text::IsControl, '?');
    return text;
}

std::string ClientText(std::string_view name, const std::string& address) {
    return Printable(name) + (address.empty() ? "" : " (" + address + ")");
}

std::string LoginLine(const vantrel::LoginVerdict& verdict, std::string_view user,
                      const std::string& client, const platform::Translator& translator) {
    const bool accepted = verdict.code == vantrel::LoginOk;
    const std::string name = Printable(accepted ? std::string_view(verdict.user.name) : user);
    return text::FormatText(translator.Translate(accepted ? kLogin : kLoginTry),
                            {name, client, verdict.text});
}

}  // namespace kalvex::server
