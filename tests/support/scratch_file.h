// A file that a test reads, removed with the test.
#pragma once

#include <string>
#include <string_view>

namespace kalvex {

class ScratchFile {
  public:
    explicit ScratchFile(std::string_view content);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Path() const { return m_path; }
    // A fault text with "FILE" in place of the path at its beginning.
    std::string WithoutPath(const std::string& fault) const;

  private:
    std::string m_path;
};

}  // namespace kalvex
