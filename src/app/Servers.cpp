#include "app/Servers.h"

#include "text/CodePage.h"

namespace kalvex::app {

namespace {

constexpr const char* kServers = "Serwery";
constexpr const char* kServer = "Serwer ";
constexpr const char* kEncryption = "Szyfrowanie";
constexpr const char* kPlainText = "Otwarty tekst";

struct TextRow {
    const char* key;
    std::string ServerEntry::*field;
};

constexpr TextRow kTexts[] = {
    {"Urząd", &ServerEntry::authority},
    {"Certyfikat", &ServerEntry::certificate},
    {"Klucz", &ServerEntry::key},
    {"Nazwa certyfikatu", &ServerEntry::certificateName},
};

}  // namespace

std::vector<ServerEntry> ReadServers(const platform::Profile& profile) {
    const std::string path = profile.GetCommonProfilePath();
    std::vector<ServerEntry> servers;
    for (const auto& [source, address] : profile.GetProfileSectionEx(kServers, path)) {
        const std::string section = kServer + source;
        ServerEntry& server = servers.emplace_back();
        server.source = source;
        server.address = text::ToUtf8(address);
        for (const TextRow& row : kTexts) {
            const std::string key = text::FromUtf8(row.key);
            const std::string ofAll = profile.GetProfileStringEx(kEncryption, key, {}, path);
            server.*row.field = text::ToUtf8(profile.GetProfileStringEx(section, key, ofAll, path));
        }
        const int ofAll = profile.GetProfileIntEx(kEncryption, kPlainText, 0, path);
        server.plainTextAllowed = profile.GetProfileIntEx(section, kPlainText, ofAll, path) != 0;
    }
    return servers;
}

}  // namespace kalvex::app
