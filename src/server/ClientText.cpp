#include "server/ClientText.h"

#include "text/TextFormat.h"
#include "vantrel/ClientName.h"

namespace kalvex::server {

namespace {

constexpr const char* kLogin = platform::Translatable("Rejestracja użytkownika %s z %s");
constexpr const char* kLoginTry =
    platform::Translatable("Próba rejestracji użytkownika %s z %s - %s");

}  // namespace

std::string ClientText(std::string_view name, const std::string& address) {
    return vantrel::Printable(name) + (address.empty() ? "" : " (" + address + ")");
}

std::string LoginLine(const vantrel::LoginVerdict& verdict, std::string_view user,
                      const std::string& client, const platform::Translator& translator) {
    const bool accepted = verdict.code == vantrel::LoginOk;
    const std::string name =
        vantrel::Printable(accepted ? std::string_view(verdict.user.name) : user);
    return text::FormatText(translator.Translate(accepted ? kLogin : kLoginTry),
                            {name, client, verdict.text});
}

}  // namespace kalvex::server
