#include "app/ConsoleConfiguration.h"

#include "text/CodePage.h"
#include "text/WholeNumber.h"

namespace kalvex::app {

namespace {

constexpr const char* kConsole = "Konsola";
constexpr const char* kFault = platform::Translatable("Plik %s, [%s] %s: %s");

template <bool vantrel::Listening::*Member>
platform::Notice SetFlag(ConsoleConfiguration& target, std::string_view text) {
    if (text != "0" && text != "1") return {platform::Translatable("oczekiwano 0 albo 1")};
    target.listening.*Member = text == "1";
    return {};
}

template <platform::Notice (*Set)(vantrel::Listening&, std::string_view)>
platform::Notice SetListening(ConsoleConfiguration& target, std::string_view text) {
    return Set(target.listening, text);
}

template <std::string vantrel::Listening::*Member>
platform::Notice SetFile(ConsoleConfiguration& target, std::string_view text) {
    return vantrel::SetConfiguredPath(target.listening.*Member, text);
}

platform::Notice SetClients(ConsoleConfiguration& target, std::string_view text) {
    const auto number = text::ReadWholeNumber<int>(text);
    if (!number || *number < 1 || *number > kMostConsoleClients) {
        return {platform::Translatable("oczekiwano liczby całkowitej od %s do %s"),
                {"1", std::to_string(kMostConsoleClients)}};
    }
    target.clients = *number;
    return {};
}

constexpr vantrel::ListeningKeys kKeys = {
    .group = "Grupa",
    .address = "Adres",
    .certificate = "Certyfikat",
    .certificateKey = "Klucz",
    .authority = "Urząd",
    .plainText = "Otwarty tekst=1",
};

struct KeyRow {
    const char* key;
    platform::Notice (*set)(ConsoleConfiguration& target, std::string_view text);
};

constexpr KeyRow kRows[] = {
    {"Gniazdo lokalne", SetFlag<&vantrel::Listening::localSocket>},
    {kKeys.group, SetListening<vantrel::SetListeningGroup>},
    {kKeys.address, SetListening<vantrel::SetListeningAddress>},
    {kKeys.certificate, SetFile<&vantrel::Listening::certificate>},
    {kKeys.certificateKey, SetFile<&vantrel::Listening::certificateKey>},
    {kKeys.authority, SetFile<&vantrel::Listening::authority>},
    {"Otwarty tekst", SetFlag<&vantrel::Listening::plainTextAllowed>},
    {"Klienci", SetClients},
};

}  // namespace

std::vector<std::string> ReadConsole(const platform::Profile& profile, const std::string& path,
                                     const platform::Translator& translator,
                                     ConsoleConfiguration& console) {
    std::vector<std::string> faults;
    const auto tell = [&](const std::string& key, const platform::Notice& reason) {
        if (!reason) return;
        const platform::Notice fault{kFault,
                                     {path, kConsole, key, platform::InWords(reason, translator)}};
        faults.push_back(text::FromUtf8(platform::InWords(fault, translator)));
    };
    for (const KeyRow& row : kRows) {
        const std::string value = profile.GetProfileStringEx(kConsole, text::FromUtf8(row.key));
        if (!value.empty()) tell(row.key, row.set(console, value));
    }
    if (!faults.empty()) return faults;
    std::string key;
    const platform::Notice reason = vantrel::CheckListening(console.listening, kKeys, key);
    tell(key, reason);
    return faults;
}

}  // namespace kalvex::app
