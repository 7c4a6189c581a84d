#include "platform/Paths.h"

#include <algorithm>
#include <filesystem>

#include "text/CodePage.h"

namespace kalvex::platform {

Paths::Paths(std::string workingDir, std::string rootDir)
    : m_workingDir(text::FromUtf8(workingDir)),
      m_rootDir(rootDir.empty() ? m_workingDir : text::FromUtf8(rootDir)) {}

std::string Paths::GetRootPath() const {
    return m_rootDir;
}

std::string Paths::GetFullPath(std::string_view path, std::string_view base) const {
    std::string slashed(path);
    std::ranges::replace(slashed, '\\', '/');
    return (std::filesystem::path(base) / slashed).lexically_normal().string();
}

std::string Paths::GetFullPath(std::string_view path) const {
    return GetFullPath(path, m_workingDir);
}

std::string Paths::GetShortPath(std::string_view path) const {
    std::string full = GetFullPath(path);
    const std::string prefix = m_workingDir + '/';
    if (full.starts_with(prefix)) full.erase(0, prefix.size());
    return full;
}

bool HasEngineForm(std::string_view nativePath) {
    return NativePath(text::FromUtf8(nativePath)) == nativePath;
}

std::string NativePath(std::string_view enginePath) {
    return text::ToUtf8(enginePath);
}

}  // namespace kalvex::platform
