// A folder of its own for a test, gone with it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace kalvex {

class ScratchFolder {
  public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kalvexXXXXXX").string();
        m_path = mkdtemp(name.data());
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path() const { return m_path.string(); }
    std::string Path(const std::string& name) const { return (m_path / name).string(); }
    bool Has(const std::string& name) const { return std::filesystem::exists(m_path / name); }

    void Put(const std::string& name, const std::string& content) const {
        std::ofstream(m_path / name, std::ios::binary) << content;
    }

    std::string Get(const std::string& name) const {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path m_path;
};

}  // namespace kalvex
