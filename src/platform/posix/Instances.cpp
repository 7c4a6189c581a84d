#include "platform/Instances.h"

#include <filesystem>

namespace kalvex::platform {

bool FileInstances::Take(const std::string& file, std::string& error) {
    const std::filesystem::path path = std::filesystem::path(m_folder) / file;
    std::error_code ignored;  // the lock tells what is wrong
    std::filesystem::create_directories(m_folder, ignored);
    bool taken = false;
    const auto atOnce = [] { return false; };
    if (m_locks.emplace_back().Acquire(path.string(), taken, error, atOnce)) return true;
    m_locks.pop_back();
    error = taken ? std::string() : path.string() + ": " + error;
    return false;
}

bool FileInstances::SetPrimaryInstance(std::string_view name) {
    std::string ignored;
    m_primary = m_primary || Take(std::string(name) + ".primary.lock", ignored);
    return m_primary;
}

bool FileInstances::LockInstance(std::string_view name, int instance, std::string& error) {
    return Take(std::string(name) + '.' + std::to_string(instance) + ".lock", error);
}

}  // namespace kalvex::platform
