// Paths as scripts write them: "/" or "\" between the parts, relative to the working directory of
// the program. Engine texts (Windows-1250) in and out; NativePath gives the bytes for the system.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::platform {

class Paths {
  public:
    // Both directories are absolute, in the system's encoding (UTF-8).
    explicit Paths(std::string workingDir, std::string rootDir = {});

    std::string GetRootPath() const;  // where data files lie; the working directory by default

    // Absolute, normalised (no "." and ".."), "/" as the separator.
    std::string GetFullPath(std::string_view path, std::string_view base) const;
    std::string GetFullPath(std::string_view path) const;

    // Relative to the working directory where the file lies below it, else the full path.
    std::string GetShortPath(std::string_view path) const;

  private:
    std::string m_workingDir;
    std::string m_rootDir;
};

// Whether a path of the system (UTF-8) can be written as an engine text. Of one with other
// characters than those of Windows-1250 the engine's form names no file.
bool HasEngineForm(std::string_view nativePath);

// The bytes by which the system knows the file.
std::string NativePath(std::string_view enginePath);

}  // namespace kalvex::platform
