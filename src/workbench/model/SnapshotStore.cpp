#include "workbench/model/SnapshotStore.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

#include "platform/Files.h"
#include "workbench/model/PutFile.h"

namespace kalvex::workbench {

namespace {

namespace fs = std::filesystem;

constexpr const char* kHistory = ".kalvex-history";
constexpr const char* kExtension = ".kx";
constexpr std::size_t kNumberLength = 10;

constexpr const char* kNotKept =
    platform::Translatable("Nie można zachować wersji skryptu %s w historii (%s)");

fs::path FolderOf(const std::string& script) {
    const fs::path path(script);
    return path.parent_path() / kHistory / path.filename();
}

struct Version {
    std::uint32_t number = 0;
    Snapshot snapshot;
};

template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    return fault == std::errc() && end == text.data() + text.size();
}

// Nothing for a file that is none of ours.
std::optional<Version> ReadVersion(const fs::path& path) {
    const std::string stem = path.stem();
    Version version;
    if (path.extension() != kExtension || stem.size() < kNumberLength + 2 ||
        stem[kNumberLength] != '-' ||
        !ReadNumber(std::string_view(stem).substr(0, kNumberLength), version.number) ||
        !ReadNumber(std::string_view(stem).substr(kNumberLength + 1), version.snapshot.time)) {
        return std::nullopt;
    }
    std::error_code fault;
    version.snapshot.size = fs::file_size(path, fault);
    if (fault) return std::nullopt;
    version.snapshot.file = path;
    return version;
}

// Newest first.
std::vector<Version> VersionsOf(const std::string& script) {
    std::vector<Version> versions;
    std::error_code fault;
    for (fs::directory_iterator at(FolderOf(script), fault), end; !fault && at != end;
         at.increment(fault)) {
        if (std::optional<Version> version = ReadVersion(at->path()))
            versions.push_back(std::move(*version));
    }
    std::ranges::sort(versions, std::ranges::greater(), &Version::number);
    return versions;
}

bool Holds(const Snapshot& snapshot, std::string_view content) {
    if (snapshot.size != content.size()) return false;
    std::string held;
    std::string error;
    return SnapshotStore::Read(snapshot, held, error) && held == content;
}

}  // namespace

platform::Notice SnapshotStore::Keep(const std::string& script, std::string_view content,
                                     std::int64_t now) {
    const std::vector<Version> versions = VersionsOf(script);
    if (!versions.empty() && Holds(versions.front().snapshot, content)) return {};
    const std::uint32_t number = versions.empty() ? 1 : versions.front().number + 1;
    char name[64];
    std::snprintf(name, sizeof name, "%010u-%lld%s", number, static_cast<long long>(now),
                  kExtension);
    const fs::path path = FolderOf(script) / name;
    std::string error;
    if (!PutFile(path, content, error)) {
        if (!m_told.insert(script).second) return {};
        return {kNotKept, {script, error}};
    }
    m_told.erase(script);
    std::error_code fault;
    const fs::perms rights = fs::status(script, fault).permissions();
    if (!fault) fs::permissions(path, rights, fault);
    for (std::size_t i = kKept - 1; i < versions.size(); ++i)
        fs::remove(versions[i].snapshot.file, fault);
    return {};
}

std::vector<Snapshot> SnapshotStore::List(const std::string& script) {
    std::vector<Snapshot> snapshots;
    for (Version& version : VersionsOf(script)) snapshots.push_back(std::move(version.snapshot));
    return snapshots;
}

bool SnapshotStore::Read(const Snapshot& snapshot, std::string& content, std::string& error) {
    return platform::ReadWholeFile(snapshot.file, content, error);
}

}  // namespace kalvex::workbench
