#include "platform/SqliteCopy.h"

#include <sqlite3.h>

#include <filesystem>

#include "platform/Files.h"
#include "platform/Sqlite.h"
#include "text/CodePage.h"

namespace kalvex::platform {

namespace {

namespace fs = std::filesystem;

constexpr int kAllPages = -1;

bool Fail(const SqliteDatabase& database, std::string& error) {
    error = database.ErrorText();
    return false;
}

bool CopyPages(SqliteDatabase& source, SqliteDatabase& copy, std::string& error) {
    sqlite3_backup* pages = sqlite3_backup_init(copy.Get(), "main", source.Get(), "main");
    if (pages == nullptr) return Fail(copy, error);
    const int stepped = sqlite3_backup_step(pages, kAllPages);
    if (sqlite3_backup_finish(pages) != SQLITE_OK) return Fail(copy, error);
    if (stepped == SQLITE_DONE) return true;
    error = sqlite3_errstr(stepped);
    return false;
}

bool IsWhole(const std::string& path, std::string& error) {
    SqliteDatabase database;
    if (!database.OpenExisting(path)) return Fail(database, error);
    SqliteStatement check;
    if (!check.Prepare(database, "PRAGMA integrity_check(1)") || !check.Next()) {
        return Fail(database, error);
    }
    const std::string found = check.Text(0);
    if (found == "ok") return true;
    // Behind a line that names the database.
    error = text::ToUtf8(std::string_view(found).substr(found.rfind('\n') + 1));
    return false;
}

bool MakeCopy(const std::string& from, const std::string& to, std::string& error) {
    SqliteDatabase source;
    if (!source.OpenExisting(from)) return Fail(source, error);
    if (!MakePrivateFile(to, error)) return false;
    SqliteDatabase copy;
    if (!copy.OpenExisting(to)) return Fail(copy, error);
    if (!CopyPages(source, copy, error)) return false;
    // The mode of the source came with its pages; a log beside the copy would be a part of it.
    if (!copy.Execute("PRAGMA journal_mode = DELETE")) return Fail(copy, error);
    copy.Close();
    return IsWhole(to, error);
}

void Remove(const std::string& path) {
    std::error_code ignored;
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) fs::remove(path + suffix, ignored);
}

}  // namespace

bool CopyDatabase(const std::string& from, const std::string& to, std::string& error) {
    const std::string made = to + ".new";
    Remove(made);
    if (MakeCopy(from, made, error) && MoveIntoPlace(made, to, error)) return true;
    Remove(made);
    return false;
}

}  // namespace kalvex::platform
