#include "support/scratch_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kalvex::support {

ScratchFolder::ScratchFolder()
    : m_path((std::filesystem::temp_directory_path() / "kalvexXXXXXX").string()) {
    if (::mkdtemp(m_path.data()) == nullptr) throw std::runtime_error("no folder " + m_path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

bool ScratchFolder::Has(std::string_view name) const {
    return std::filesystem::exists(Path(name));
}

std::string ScratchFolder::Put(std::string_view name, std::string_view content) const {
    std::ofstream file(Path(name), std::ios::binary);
    if (!(file << content).flush()) throw std::runtime_error("cannot write " + Path(name));
    return Path(name);
}

std::string ScratchFolder::PutSecret(std::string_view name, std::string_view content) const {
    using std::filesystem::perms;
    const std::string path = Put(name, content);
    std::filesystem::permissions(path, perms::owner_read | perms::owner_write);
    return path;
}

std::string ScratchFolder::Get(std::string_view name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void ScratchFolder::MakeFolder(std::string_view name) const {
    std::filesystem::create_directories(Path(name));
}

}  // namespace kalvex::support
