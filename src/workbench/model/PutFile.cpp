#include "workbench/model/PutFile.h"

#include <filesystem>
#include <system_error>

#include "platform/Files.h"

namespace kalvex::workbench {

namespace fs = std::filesystem;

bool PutFile(const std::string& path, std::string_view content, std::string& error) {
    std::error_code fault;
    fs::create_directories(fs::path(path).parent_path(), fault);
    if (!fault) return platform::WritePrivateFile(path, content, error);
    error = fault.message();
    return false;
}

}  // namespace kalvex::workbench
