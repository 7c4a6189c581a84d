#include "vantrel/Listening.h"

#include <algorithm>
#include <cstdint>

#include "platform/NetworkAddress.h"
#include "platform/posix/AccountName.h"
#include "text/Characters.h"
#include "text/CodePage.h"

namespace kalvex::vantrel {

namespace {

bool HasControls(std::string_view text) {
    return std::any_of(text.begin(), text.end(), text::IsControl);
}

bool IsHeardElsewhere(const std::string& address) {
    std::string host;
    std::uint16_t port = 0;
    return platform::ReadAddress(address, host, port) && !platform::IsLoopback(host);
}

}  // namespace

platform::Notice SetListeningGroup(Listening& target, std::string_view text) {
    target.group = text::ToUtf8(text);
    if (platform::HasSystemGroup(target.group)) return {};
    return {platform::Translatable("w systemie nie ma grupy o tej nazwie")};
}

platform::Notice SetListeningAddress(Listening& target, std::string_view text) {
    std::string host;
    std::uint16_t port = 0;
    if (HasControls(text) || !platform::ReadAddress(text, host, port)) {
        return {platform::Translatable("oczekiwano adresu w postaci komputer:port")};
    }
    target.address = text::ToUtf8(text);
    return {};
}

platform::Notice SetConfiguredPath(std::string& path, std::string_view text) {
    if (text.empty() || HasControls(text)) return {platform::Translatable("oczekiwano ścieżki")};
    path = text::ToUtf8(text);
    return {};
}

platform::Notice CheckListening(const Listening& listening, const ListeningKeys& keys,
                                std::string& key) {
    if (listening.certificate.empty() != listening.certificateKey.empty()) {
        key = listening.certificate.empty() ? keys.certificateKey : keys.certificate;
        return {platform::Translatable("certyfikat i klucz podaje się razem")};
    }
    if (!listening.authority.empty() && listening.certificate.empty()) {
        key = keys.authority;
        return {platform::Translatable(
            "certyfikaty klientów sprawdza tylko serwer, który ma własny certyfikat")};
    }
    if (!listening.group.empty() && !listening.localSocket) {
        key = keys.group;
        return {platform::Translatable("bez gniazda lokalnego grupa nie ma znaczenia")};
    }
    const bool plain = listening.certificate.empty() && !listening.plainTextAllowed;
    if (plain && IsHeardElsewhere(listening.address)) {
        key = keys.address;
        return {platform::Translatable("poza tym komputerem połączenia muszą być szyfrowane (%s, "
                                       "%s), chyba że %s"),
                {keys.certificate, keys.certificateKey, keys.plainText}};
    }
    return {};
}

}  // namespace kalvex::vantrel
