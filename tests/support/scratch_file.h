// A file that a test reads, removed with the test.
#pragma once

#include <string>
#include <string_view>

#include "support/scratch_folder.h"

namespace kalvex::support {

class ScratchFile {
  public:
    explicit ScratchFile(std::string_view content) : m_path(m_folder.Put("plik", content)) {}

    const std::string& Path() const { return m_path; }
    // A fault text with "FILE" in place of the path at its beginning.
    std::string WithoutPath(const std::string& fault) const {
        return fault.starts_with(m_path) ? "FILE" + fault.substr(m_path.size()) : fault;
    }

  private:
    ScratchFolder m_folder;
    std::string m_path;
};

}  // namespace kalvex::support
