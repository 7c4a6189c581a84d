// A folder of its own for a test, gone with it.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::support {

class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const { return m_path; }
    std::string Path(std::string_view name) const { return m_path + "/" + std::string(name); }
    bool Has(std::string_view name) const;

    // Files byte for byte. Put answers with the path of its file, Get with nothing where none is.
    std::string Put(std::string_view name, std::string_view content) const;
    std::string Get(std::string_view name) const;
    // The same as Put, for its owner alone, as keys have to be.
    std::string PutSecret(std::string_view name, std::string_view content) const;

    // A folder inside.
    void MakeFolder(std::string_view name) const;

  private:
    std::string m_path;
};

}  // namespace kalvex::support
