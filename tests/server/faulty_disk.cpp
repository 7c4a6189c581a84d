#include "faulty_disk.h"

#include <sqlite3.h>

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>

namespace kalvex::server {

namespace {

std::atomic<std::int64_t> g_before = 0;
std::atomic<std::int64_t> g_left = 0;
std::atomic<std::int64_t> g_failures = 0;

bool Fails() {
    if (g_left.load() <= 0) return false;
    if (g_before.fetch_sub(1) > 0) return false;
    if (g_left.fetch_sub(1) <= 0) return false;
    ++g_failures;
    return true;
}

enum class Hold { None, Wanted, Held };

std::mutex g_mutex;
std::condition_variable g_holdChanged;
Hold g_hold = Hold::None;

void SetHold(Hold hold) {
    const std::lock_guard lock(g_mutex);
    g_hold = hold;
    g_holdChanged.notify_all();
}

void StandIfHeld() {
    std::unique_lock lock(g_mutex);
    if (g_hold != Hold::Wanted) return;
    g_hold = Hold::Held;
    g_holdChanged.notify_all();
    g_holdChanged.wait(lock, [] { return g_hold != Hold::Held; });
}

sqlite3_vfs* Below(sqlite3_vfs* vfs) {
    return static_cast<sqlite3_vfs*>(vfs->pAppData);
}

struct File {
    sqlite3_file base;
    sqlite3_file* Below() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

// Passes a call on to the file below.
template <auto Method, class... Arguments>
int Pass(sqlite3_file* file, Arguments... arguments) {
    sqlite3_file* const below = reinterpret_cast<File*>(file)->Below();
    return (below->pMethods->*Method)(below, arguments...);
}

template <auto Method, int Code, class... Arguments>
int PassOrFail(sqlite3_file* file, Arguments... arguments) {
    return Fails() ? Code : Pass<Method>(file, arguments...);
}

using Methods = sqlite3_io_methods;

int Read(sqlite3_file* file, void* content, int size, sqlite3_int64 offset) {
    StandIfHeld();
    return Pass<&Methods::xRead>(file, content, size, offset);
}

int MapShared(sqlite3_file* file, int region, int size, int extend, void volatile** memory) {
    if (extend != 0 && Fails()) return SQLITE_IOERR_SHMSIZE;
    return Pass<&Methods::xShmMap>(file, region, size, extend, memory);
}

void Barrier(sqlite3_file* file) {
    sqlite3_file* const below = reinterpret_cast<File*>(file)->Below();
    below->pMethods->xShmBarrier(below);
}

const Methods kMethods = {
    3,
    Pass<&Methods::xClose>,
    Read,
    PassOrFail<&Methods::xWrite, SQLITE_FULL, const void*, int, sqlite3_int64>,
    PassOrFail<&Methods::xTruncate, SQLITE_IOERR_TRUNCATE, sqlite3_int64>,
    PassOrFail<&Methods::xSync, SQLITE_IOERR_FSYNC, int>,
    Pass<&Methods::xFileSize, sqlite3_int64*>,
    Pass<&Methods::xLock, int>,
    Pass<&Methods::xUnlock, int>,
    Pass<&Methods::xCheckReservedLock, int*>,
    Pass<&Methods::xFileControl, int, void*>,
    Pass<&Methods::xSectorSize>,
    Pass<&Methods::xDeviceCharacteristics>,
    MapShared,
    Pass<&Methods::xShmLock, int, int, int>,
    Barrier,
    Pass<&Methods::xShmUnmap, int>,
    Pass<&Methods::xFetch, sqlite3_int64, int, void**>,
    Pass<&Methods::xUnfetch, sqlite3_int64, void*>,
};

int OpenFile(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    file->pMethods = nullptr;
    if ((flags & SQLITE_OPEN_CREATE) != 0 && Fails()) return SQLITE_CANTOPEN;
    sqlite3_file* const below = reinterpret_cast<File*>(file)->Below();
    const int code = Below(vfs)->xOpen(Below(vfs), name, below, flags, outFlags);
    if (below->pMethods != nullptr) file->pMethods = &kMethods;
    return code;
}

int DeleteFile(sqlite3_vfs* vfs, const char* name, int sync) {
    return Fails() ? SQLITE_IOERR_DELETE : Below(vfs)->xDelete(Below(vfs), name, sync);
}

sqlite3_vfs g_vfs = {};

}  // namespace

FaultyDisk::FaultyDisk() {
    Mend();
    sqlite3_vfs* const below = ::sqlite3_vfs_find(nullptr);
    g_vfs = *below;
    g_vfs.szOsFile = static_cast<int>(sizeof(File)) + below->szOsFile;
    g_vfs.zName = "faulty-disk";
    g_vfs.pNext = nullptr;
    g_vfs.pAppData = below;
    g_vfs.xOpen = OpenFile;
    g_vfs.xDelete = DeleteFile;
    ::sqlite3_vfs_register(&g_vfs, 1);
}

FaultyDisk::~FaultyDisk() {
    ::sqlite3_vfs_unregister(&g_vfs);
    ::sqlite3_vfs_register(static_cast<sqlite3_vfs*>(g_vfs.pAppData), 1);
}

void FaultyDisk::Fail(std::int64_t after, std::int64_t count) {
    g_failures = 0;
    g_before = after;
    g_left = count;
}

void FaultyDisk::Mend() {
    g_left = 0;
}

std::int64_t FaultyDisk::Failures() const {
    return g_failures;
}

void FaultyDisk::HoldRead() {
    SetHold(Hold::Wanted);
}

void FaultyDisk::AwaitHeld() {
    std::unique_lock lock(g_mutex);
    g_holdChanged.wait(lock, [] { return g_hold == Hold::Held; });
}

void FaultyDisk::Release() {
    SetHold(Hold::None);
}

}  // namespace kalvex::server
