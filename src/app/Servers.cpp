#include "app/Servers.h"

#include "app/ProfileKeys.h"
#include "text/CodePage.h"

namespace kalvex::app {

namespace {

struct TextRow {
    const char* key;
    std::string ServerEntry::*field;
};

constexpr TextRow kTexts[] = {
    {Key::Authority, &ServerEntry::authority},
    {Key::Certificate, &ServerEntry::certificate},
    {Key::CertificateKey, &ServerEntry::key},
    {Key::CertificateName, &ServerEntry::certificateName},
};

}  // namespace

std::vector<ServerEntry> ReadServers(const platform::Profile& profile) {
    const std::string path = profile.GetCommonProfilePath();
    std::vector<ServerEntry> servers;
    for (const auto& [source, address] : profile.GetProfileSectionEx(Section::Servers, path)) {
        const std::string section = Section::Server + source;
        ServerEntry& server = servers.emplace_back();
        server.source = source;
        server.address = text::ToUtf8(address);
        for (const TextRow& row : kTexts) {
            const std::string key = text::FromUtf8(row.key);
            const std::string ofAll =
                profile.GetProfileStringEx(Section::Encryption, key, {}, path);
            server.*row.field = text::ToUtf8(profile.GetProfileStringEx(section, key, ofAll, path));
        }
        const int ofAll = profile.GetProfileIntEx(Section::Encryption, Key::PlainText, 0, path);
        server.plainTextAllowed =
            profile.GetProfileIntEx(section, Key::PlainText, ofAll, path) != 0;
    }
    return servers;
}

}  // namespace kalvex::app
