#include "platform/posix/Flock.h"

#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <ctime>
#include <fstream>
#include <sstream>

#include "text/ControlText.h"

namespace kalvex::platform {

namespace {

constexpr timespec kBetweenTries{0, 10'000'000};
constexpr int kTriesInASecond = 100;
constexpr const char* kUnknown = "?";
constexpr std::size_t kLongestName = 64;

// By what it was started as: the names of threads, which lists of processes show, are chosen by
// programs.
std::string ProgramOf(const std::string& process) {
    std::ifstream file("/proc/" + process + "/cmdline");
    std::string name;
    std::getline(file, name, '\0');
    name = name.substr(name.rfind('/') + 1, kLongestName);
    return name.empty() ? kUnknown : text::EscapeUtf8Controls(name);
}

}  // namespace

LockPause PauseFor(int seconds) {
    return [left = seconds * kTriesInASecond]() mutable {
        ::nanosleep(&kBetweenTries, nullptr);
        return left-- > 0;
    };
}

bool LockAlone(int fd, const LockPause& pause) {
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return false;
        if (pause()) continue;
        errno = EWOULDBLOCK;
        return false;
    }
    return true;
}

std::string LockHolder(int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0) return kUnknown;
    const std::string place =
        fmt::format("{:02x}:{:02x}:{}", major(info.st_dev), minor(info.st_dev), info.st_ino);
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number, kind, sort, access, process, where;
        words >> number >> kind >> sort >> access >> process >> where;
        if (kind != "FLOCK" || where != place || process.front() < '1') continue;
        return ProgramOf(process) + '[' + process + ']';
    }
    return kUnknown;
}

}  // namespace kalvex::platform
