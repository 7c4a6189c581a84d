#include "app/ConsoleConfiguration.h"

#include "app/ProfileCheck.h"
#include "app/ProfileKeys.h"
#include "platform/Files.h"
#include "platform/IniText.h"
#include "text/CodePage.h"
#include "text/WholeNumber.h"

namespace kalvex::app {

namespace {

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
    .group = Key::Group,
    .address = Key::Address,
    .certificate = Key::Certificate,
    .certificateKey = Key::CertificateKey,
    .authority = Key::Authority,
    .plainText = "Otwarty tekst=1",
};

struct KeyRow {
    const char* key;
    platform::Notice (*set)(ConsoleConfiguration& target, std::string_view text);
};

constexpr KeyRow kRows[] = {
    {Key::LocalSocket, SetFlag<&vantrel::Listening::localSocket>},
    {Key::Group, SetListening<vantrel::SetListeningGroup>},
    {Key::Address, SetListening<vantrel::SetListeningAddress>},
    {Key::Certificate, SetFile<&vantrel::Listening::certificate>},
    {Key::CertificateKey, SetFile<&vantrel::Listening::certificateKey>},
    {Key::Authority, SetFile<&vantrel::Listening::authority>},
    {Key::PlainText, SetFlag<&vantrel::Listening::plainTextAllowed>},
    {Key::Clients, SetClients},
};

int FindLine(const std::string& path, const std::string& key) {
    std::string content;
    std::string error;
    if (!platform::ReadWholeFile(path, content, error)) return 0;
    return platform::IniText(content).FindLine(Section::Console, text::FromUtf8(key));
}

}  // namespace

std::vector<std::string> ReadConsole(const platform::Profile& profile, const std::string& path,
                                     const platform::Translator& translator,
                                     ConsoleConfiguration& console) {
    std::vector<std::string> faults;
    const auto tell = [&](const std::string& key, const platform::Notice& reason) {
        if (!reason) return;
        const ProfileEntry entry{path, FindLine(path, key), Section::Console, key};
        faults.push_back(text::FromUtf8(TellEntryFault(entry, reason, translator)));
    };
    for (const KeyRow& row : kRows) {
        const std::string value =
            profile.GetProfileStringEx(Section::Console, text::FromUtf8(row.key));
        if (!value.empty()) tell(row.key, row.set(console, value));
    }
    if (!faults.empty()) return faults;
    std::string key;
    const platform::Notice reason = vantrel::CheckListening(console.listening, kKeys, key);
    tell(key, reason);
    return faults;
}

}  // namespace kalvex::app
