#include "programs/OptionTable.h"

namespace kalvex::programs {

void MakeAbsolute(ModuleOptions& options, const std::string& currentDir) {
    const auto absolute = [](const std::filesystem::path& base, const std::string& folder) {
        std::string path = (base / folder).lexically_normal().string();
        if (path.size() > 1 && path.ends_with('/')) path.pop_back();
        return path;
    };
    const std::filesystem::path current = currentDir;
    options.workingDir = absolute(current, options.workingDir);
    options.logDir =
        options.logDir.empty() ? options.workingDir : absolute(current, options.logDir);
}

}  // namespace kalvex::programs
