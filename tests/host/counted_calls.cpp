#include "host/counted_calls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>

namespace kalvex::host {

namespace {

// Whether the call is to fail.
bool IsStruck(const char* name) {
    CountedCalls& calls = Calls();
    if (calls.blow == Blow::None) return false;
    const std::size_t used = std::strlen(calls.all);
    std::snprintf(calls.all + used, sizeof calls.all - used, "%s ", name);
    if (++calls.count != calls.at) return false;
    std::strncpy(calls.struck, name, sizeof calls.struck - 1);
    if (calls.blow == Blow::Kill) raise(SIGKILL);
    errno = EIO;
    return true;
}

std::string_view FolderOf(std::string_view path) {
    return path.substr(0, path.rfind('/') + 1);
}

bool Refuse(int error) {
    if (error != 0) errno = error;
    return error != 0;
}

// Whether the disk has no way from one name to the other; `error` is what it answers to the call.
bool IsRefused(const char* from, const char* to, int error) {
    const bool isFar = Calls().disk.foldersApart && FolderOf(from) != FolderOf(to);
    return Refuse(isFar ? EXDEV : error);
}

bool IsLockRefused(int fd, int operation) {
    const DiskKind& disk = Calls().disk;
    const bool isRead = (fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDONLY;
    const bool isBad = disk.lockIsWrite && isRead && (operation & LOCK_EX) != 0;
    return Refuse(isBad ? EBADF : disk.lock);
}

}  // namespace

CountedCalls& Calls() {
    static CountedCalls* const calls =
        new (mmap(nullptr, sizeof(CountedCalls), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                  -1, 0)) CountedCalls;
    return *calls;
}

}  // namespace kalvex::host

using kalvex::host::Calls;
using kalvex::host::IsLockRefused;
using kalvex::host::IsRefused;
using kalvex::host::IsStruck;

extern "C" {

#define KALVEX_COUNTED_UNLESS(refused, name, parameters, arguments)         \
    int __real_##name parameters;                                           \
    int __wrap_##name parameters {                                          \
        return IsStruck(#name) || (refused) ? -1 : __real_##name arguments; \
    }
#define KALVEX_COUNTED(name, parameters, arguments) \
    KALVEX_COUNTED_UNLESS(false, name, parameters, arguments)

KALVEX_COUNTED(stat, (const char* path, struct stat* info), (path, info))
KALVEX_COUNTED(lstat, (const char* path, struct stat* info), (path, info))
KALVEX_COUNTED(fstat, (int fd, struct stat* info), (fd, info))
KALVEX_COUNTED_UNLESS(IsLockRefused(fd, operation), flock, (int fd, int operation), (fd, operation))
KALVEX_COUNTED(fchown, (int fd, uid_t user, gid_t group), (fd, user, group))
KALVEX_COUNTED(fchmod, (int fd, mode_t mode), (fd, mode))
KALVEX_COUNTED_UNLESS(IsRefused(from, to, Calls().disk.link), link,
                      (const char* from, const char* to), (from, to))
KALVEX_COUNTED(unlink, (const char* path), (path))
KALVEX_COUNTED_UNLESS(IsRefused(from, to, 0), rename, (const char* from, const char* to),
                      (from, to))
KALVEX_COUNTED_UNLESS(IsRefused(from, to, Calls().disk.exchange), renameat2,
                      (int fromFolder, const char* from, int toFolder, const char* to,
                       unsigned int flags),
                      (fromFolder, from, toFolder, to, flags))

int __real_fsync(int fd);
int __wrap_fsync(int fd) {
    if (IsStruck("fsync")) return -1;
    return Calls().syncs ? __real_fsync(fd) : 0;
}

int __real_close(int fd);
int __wrap_close(int fd) {
    const bool struck = IsStruck("close");
    const int result = __real_close(fd);
    return struck ? -1 : result;
}

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return IsStruck("open") ? -1 : __real_open(path, flags, mode);
}

ssize_t __real_readlink(const char* path, char* target, std::size_t size);
ssize_t __wrap_readlink(const char* path, char* target, std::size_t size) {
    return IsStruck("readlink") ? -1 : __real_readlink(path, target, size);
}

ssize_t __real_read(int fd, void* bytes, std::size_t size);
ssize_t __wrap_read(int fd, void* bytes, std::size_t size) {
    return IsStruck("read") ? -1 : __real_read(fd, bytes, size);
}

// A write is struck before it begins or half-way.
ssize_t __real_write(int fd, const void* bytes, std::size_t size);
ssize_t __wrap_write(int fd, const void* bytes, std::size_t size) {
    if (IsStruck("write")) return -1;
    kalvex::host::CountedCalls& calls = kalvex::host::Calls();
    const bool isHalf =
        calls.blow != kalvex::host::Blow::None && calls.count + 1 == calls.at && size > 1;
    if (!isHalf) {
        if (calls.blow != kalvex::host::Blow::None) ++calls.count;
        return __real_write(fd, bytes, size);
    }
    const ssize_t written = __real_write(fd, bytes, size / 2);
    IsStruck("half a write");
    return written;
}

}  // extern "C"
