#include "vantrel/network/TlsContent.h"

#include "platform/Files.h"

namespace kalvex::vantrel {

bool ReadTlsFiles(const TlsFiles& files, TlsContent& content, platform::Notice& error) {
    const struct {
        const std::string& path;
        std::string& content;
    } rows[] = {{files.authority, content.authority},
                {files.certificate, content.certificate},
                {files.key, content.key}};
    for (const auto& row : rows) {
        std::string why;
        if (row.path.empty() || platform::ReadWholeFile(row.path, row.content, why)) continue;
        error = {platform::Translatable("Brak dostępu do pliku %s (%s)"), {row.path, why}};
        return false;
    }
    return true;
}

}  // namespace kalvex::vantrel
