#include "console/LoginText.h"

#include <algorithm>

#include "text/TextFormat.h"

namespace kalvex::console {

namespace {

constexpr const char* kLogin = platform::Translatable("Rejestracja użytkownika");
constexpr const char* kLoginTry = platform::Translatable("Próba rejestracji użytkownika");
constexpr const char* kNoRight = platform::Translatable(" - brak uprawnień");

struct AccountRow {
    int level;
    const char* text;
};

constexpr int kAnyLevel = -1;
constexpr const char* kOwnAccount = platform::Translatable("%s %s (Sorvane: %d) z %s");

// Of accounts of a directory, by their levels.
constexpr AccountRow kDirectoryAccounts[] = {
    {255, platform::Translatable(
              "%s %s (AD: Użytkownik nie należy do predefiniowanej grupy domenowej) z %s")},
    {100, platform::Translatable("%s %s (AD: Administrator Sorvane SCADA) z %s")},
    {kAnyLevel, platform::Translatable("%s %s (AD: Użytkownik Sorvane SCADA) z %s")},
};

std::string AccountText(const ConsoleWriter& client, bool accepted,
                        const platform::UserDirectory& users,
                        const platform::Translator& translator) {
    const std::string word = translator.Translate(accepted ? kLogin : kLoginTry);
    const int level = users.GetUserRightLevel(client.user, {});
    if (!users.IsUserADAccount(client.user)) {
        return text::FormatText(translator.Translate(kOwnAccount),
                                {word, client.user, std::to_string(level), client.client});
    }
    const auto* row = std::ranges::find_if(kDirectoryAccounts, [level](const AccountRow& account) {
        return account.level == level || account.level == kAnyLevel;
    });
    return text::FormatText(translator.Translate(row->text), {word, client.user, client.client});
}

}  // namespace

std::string LoginText(const ConsoleWriter& client, bool accepted,
                      const platform::UserDirectory& users,
                      const platform::Translator& translator) {
    std::string text = AccountText(client, accepted, users, translator);
    if (!client.address.empty()) text += " (" + client.address + ")";
    if (!accepted) text += translator.Translate(kNoRight);
    return text;
}

}  // namespace kalvex::console
