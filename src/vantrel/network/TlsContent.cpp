#include "vantrel/network/TlsContent.h"

#include "platform/Files.h"

namespace kalvex {

bool ReadTlsFiles(const TlsFiles& files, TlsContent& content, std::string& error) {
    const struct {
        const std::string& path;
        std::string& content;
    } rows[] = {{files.authority, content.authority},
                {files.certificate, content.certificate},
                {files.key, content.key}};
    for (const auto& row : rows) {
        std::string why;
        if (row.path.empty() || ReadWholeFile(row.path, row.content, why)) continue;
        error = "Brak dostępu do pliku " + row.path + " (" + why + ")";
        return false;
    }
    return true;
}

}  // namespace kalvex
