// A folder for the length of a test.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace kalvex {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = testing::TempDir() + "kalvex_XXXXXX";
        m_strPath = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_strPath); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string Path(std::string_view name) const { return m_strPath + "/" + std::string(name); }

    // The path of the file that it makes.
    std::string Write(std::string_view name, std::string_view content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }

  private:
    std::string m_strPath;
};

}  // namespace kalvex
