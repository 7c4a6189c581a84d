#include "platform/Instances.h"

#include <filesystem>

namespace kalvex::platform {

bool FileInstances::Take(const std::string& file, std::string& error) {
    const std::filesystem::path path = std::filesystem::path(m_strFolder) / file;
    std::error_code ignored;  // the lock tells what is wrong
    std::filesystem::create_directories(m_strFolder, ignored);
    bool taken = false;
    if (m_arrLocks.emplace_back().Acquire(path.string(), taken, error)) return true;
    m_arrLocks.pop_back();
    error = taken ? std::string() : path.string() + ": " + error;
    return false;
}

bool FileInstances::SetPrimaryInstance(std::string_view name) {
    std::string ignored;
    m_bPrimary = m_bPrimary || Take(std::string(name) + ".primary.lock", ignored);
    return m_bPrimary;
}

bool FileInstances::LockInstance(std::string_view name, int instance, std::string& error) {
    return Take(std::string(name) + '.' + std::to_string(instance) + ".lock", error);
}

}  // namespace kalvex::platform
