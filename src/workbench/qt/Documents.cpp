#include "workbench/qt/Documents.h"

#include <filesystem>

namespace kalvex::window {

std::string LanguageManual() {
    namespace fs = std::filesystem;
    std::error_code fault;
    const fs::path program = fs::read_symlink("/proc/self/exe", fault).parent_path();
    const fs::path installed = program.parent_path() / "share/doc/kalvex/language.md";
    // A build lies three folders below the documents.
    const fs::path built = program.parent_path().parent_path().parent_path() / "docs/language.md";
    return (fs::exists(installed, fault) ? installed : built).string();
}

}  // namespace kalvex::window
