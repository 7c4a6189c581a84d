#include "server/Backup.h"

#include <cerrno>
#include <filesystem>
#include <map>

#include "platform/Files.h"
#include "platform/NewFolder.h"
#include "platform/SqliteCopy.h"
#include "platform/posix/RegularFile.h"

namespace kalvex::server {

namespace {

namespace fs = std::filesystem;

constexpr const char* kTaken =
    platform::Translatable("%s: już istnieje, a kopia ma być nowym folderem");

using Copy = bool (*)(const std::string& from, const std::string& to, std::string& error);

struct SavedFile {
    std::string origin;
    Copy copy;
};

using SavedFiles = std::map<std::string, SavedFile>;  // by the names in the backup

bool CopyText(const std::string& from, const std::string& to, std::string& error) {
    std::string content;
    std::string written;
    if (!platform::ReadWholeFile(from, content, error) ||
        !platform::WritePrivateFile(to, content, error) ||
        !platform::ReadWholeFile(to, written, error)) {
        return false;
    }
    if (written != content) error = platform::FileFault(EIO);
    return written == content;
}

std::string Absolute(const std::string& path) {
    return fs::absolute(path).lexically_normal().string();
}

// Files keep the places that they have below the folder of the configuration, so that it finds
// them where it is restored; those elsewhere keep their whole path.
std::string NameOf(const std::string& file, const std::string& configuration) {
    const fs::path below = fs::path(file).lexically_relative(fs::path(configuration).parent_path());
    if (*below.begin() != "..") return (fs::path("configuration") / below).string();
    return (fs::path("elsewhere") / fs::path(file).relative_path()).string();
}

SavedFiles FilesOf(const Definitions& definitions) {
    SavedFiles files;
    files["store.sqlite"] = {Absolute(StorePath(definitions)), platform::CopyDatabase};
    files["users.sqlite"] = {Absolute(definitions.usersFile), platform::CopyDatabase};
    std::vector<std::string> texts = definitions.files;
    const vantrel::Listening& listening = definitions.listening;
    for (const std::string* file :
         {&listening.certificate, &listening.certificateKey, &listening.authority}) {
        if (!file->empty()) texts.push_back(*file);
    }
    const std::string configuration = Absolute(texts.front());
    for (const std::string& text : texts) {
        const std::string file = Absolute(text);
        files[NameOf(file, configuration)] = {file, CopyText};
    }
    return files;
}

}  // namespace

bool MakeBackup(const Definitions& definitions, const std::string& folder,
                std::vector<BackupFile>& files, platform::Notice& error) {
    std::error_code ignored;
    if (fs::symlink_status(folder, ignored).type() != fs::file_type::not_found) {
        error = {kTaken, {folder}};
        return false;
    }
    platform::NewFolder made(folder);
    std::string reason;
    const auto fail = [&](const std::string& path) {
        error = {"%s: %s", {path, reason}};
        return false;
    };
    if (!made.Begin(reason)) return fail(folder);
    std::string list;
    for (const auto& [name, file] : FilesOf(definitions)) {
        const std::string copy = made.Making() + '/' + name;
        if (!made.MakeFolderOf(name, reason) || !file.copy(file.origin, copy, reason)) {
            return fail(file.origin);
        }
        files.push_back({name, file.origin, fs::file_size(copy, ignored)});
        list += name + '\t' + file.origin + '\n';
    }
    if (!platform::WritePrivateFile(made.Making() + "/files", list, reason) ||
        !made.Commit(reason)) {
        return fail(folder);
    }
    return true;
}

}  // namespace kalvex::server
