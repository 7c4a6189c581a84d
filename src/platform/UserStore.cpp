#include "platform/UserStore.h"

#include <algorithm>

#include "platform/AddressRange.h"
#include "platform/Files.h"
#include "platform/Translator.h"
#include "text/Characters.h"
#include "text/CodePage.h"

namespace kalvex::platform {

namespace {

constexpr int kSchemaVersion = 1;
constexpr int kShortWait = 250;  // ms
constexpr std::size_t kLongestDescription = 255;

constexpr const char* kNameTaken = Translatable("Użytkownik o tej nazwie już istnieje");
constexpr const char* kNoUser = Translatable("Brak użytkownika o tej nazwie");
constexpr const char* kBadName = Translatable(
    "Nazwa użytkownika musi mieć od 1 do 64 znaków, bez znaku \":\" i znaków sterujących, "
    "i być różna od NOBODY");
constexpr const char* kBadDescription = Translatable("Opis użytkownika może mieć do 255 znaków");
constexpr const char* kBadLevel = Translatable("Poziom użytkownika musi być liczbą od 0 do 100");
constexpr const char* kBadGroup =
    Translatable("Nazwa grupy musi mieć od 1 do 64 znaków i nie może być liczbą");
constexpr const char* kBadAddress = Translatable("Niepoprawny adres lub zakres adresów");
constexpr const char* kBadPassword = Translatable("Hasło musi mieć od 1 do 256 znaków");
constexpr const char* kNoMemory = Translatable("Brak pamięci do wyznaczenia skrótu hasła");
constexpr const char* kNewerFile = Translatable("Plik użytkowników jest z nowszej wersji programu");

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS users (id INTEGER PRIMARY KEY, key TEXT NOT NULL UNIQUE, "
    "name TEXT NOT NULL, description TEXT NOT NULL, level INTEGER NOT NULL, hash TEXT NOT NULL);"
    "CREATE TABLE IF NOT EXISTS user_groups (user INTEGER NOT NULL REFERENCES users (id) "
    "ON DELETE CASCADE, name TEXT NOT NULL, PRIMARY KEY (user, name)) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS user_addresses (user INTEGER NOT NULL REFERENCES users (id) "
    "ON DELETE CASCADE, address TEXT NOT NULL, PRIMARY KEY (user, address)) WITHOUT ROWID;"
    "PRAGMA user_version = 1;";

bool IsPrintable(std::string_view text) {
    return std::none_of(text.begin(), text.end(), text::IsControl);
}

bool IsUserName(std::string_view name) {
    return !name.empty() && name.size() <= kLongestUserName && IsPrintable(name) &&
           name.find(':') == std::string_view::npos && !text::EqualNoCase(name, kNobody);
}

bool IsGroupName(std::string_view name) {
    return name.size() <= kLongestUserName && IsPrintable(name) &&
           name.find_first_not_of("0123456789") != std::string_view::npos;
}

// Null when all is well.
const char* FaultOf(const UserRecord& user) {
    if (!IsUserName(user.name)) return kBadName;
    if (user.description.size() > kLongestDescription) return kBadDescription;
    if (user.level < 0 || user.level > kHighestLevel) return kBadLevel;
    if (!std::all_of(user.groups.begin(), user.groups.end(), IsGroupName)) return kBadGroup;
    if (!std::all_of(user.addresses.begin(), user.addresses.end(), IsAddressRange)) {
        return kBadAddress;
    }
    return nullptr;
}

const char* FaultOf(std::string_view password) {
    return password.empty() || password.size() > kLongestPassword ? kBadPassword : nullptr;
}

bool Refuse(std::string& error, const char* reason) {
    error = text::FromUtf8(reason);
    return false;
}

std::vector<std::string> ReadList(SqliteDatabase& database, const char* sql, std::int64_t user) {
    std::vector<std::string> list;
    SqliteStatement select;
    if (!select.Prepare(database, sql)) return list;
    select.BindInteger(1, user);
    while (select.Next()) list.push_back(select.Text(0));
    return list;
}

constexpr const char* kSelectUser = "SELECT id, name, description, level, hash FROM users ";

UserRecord ReadUser(SqliteDatabase& database, const SqliteStatement& row) {
    UserRecord user;
    user.name = row.Text(1);
    user.description = row.Text(2);
    user.level = static_cast<int>(row.Integer(3));
    user.groups = ReadList(database, "SELECT name FROM user_groups WHERE user = ? ORDER BY name",
                           row.Integer(0));
    user.addresses =
        ReadList(database, "SELECT address FROM user_addresses WHERE user = ? ORDER BY address",
                 row.Integer(0));
    return user;
}

UserFinding FindIn(SqliteDatabase& database, std::string_view name) {
    UserFinding finding;
    SqliteStatement select;
    if (select.Prepare(database, (std::string(kSelectUser) + "WHERE key = ?").c_str())) {
        select.BindText(1, text::ToUpper(name));
        if (select.Next()) {
            finding.hash = select.Text(4);
            finding.record = ReadUser(database, select);
            return finding;
        }
        if (!select.Failed()) return finding;
    }
    finding.fault = text::FromUtf8(database.ErrorText());
    return finding;
}

bool InsertList(SqliteDatabase& database, const char* sql, std::int64_t user,
                const std::vector<std::string>& list) {
    SqliteStatement insert;
    if (!insert.Prepare(database, sql)) return false;
    return std::all_of(list.begin(), list.end(), [&](const std::string& entry) {
        insert.BindInteger(1, user);
        insert.BindText(2, entry);
        return insert.Run();
    });
}

}  // namespace

bool UserStore::Fail(std::string& error) const {
    error = text::FromUtf8(m_database.ErrorText());
    return false;
}

bool UserStore::Open(const std::string& path, std::string& error) {
    if (!MakePrivateFile(path, error)) {
        error = text::FromUtf8(error);
        return false;
    }
    if (!m_database.Open(path)) return Fail(error);
    m_path = path;
    {
        SqliteStatement version;
        if (!version.Prepare(m_database, "PRAGMA user_version")) return Fail(error);
        if (version.Next() && version.Integer(0) > kSchemaVersion) {
            return Refuse(error, kNewerFile);
        }
        if (version.Failed()) return Fail(error);
    }
    SqliteTransaction transaction(m_database);
    return (m_database.Execute(kSchema) && transaction.Commit() &&
            m_database.Execute("PRAGMA foreign_keys = ON")) ||
           Fail(error);
}

bool UserStore::Add(const UserRecord& user, std::string_view password, std::string& error) {
    if (const char* fault = FaultOf(user)) return Refuse(error, fault);
    if (const char* fault = FaultOf(password)) return Refuse(error, fault);
    if (Find(user.name)) return Refuse(error, kNameTaken);
    const std::string hash = HashPassword(password, m_cost);
    if (hash.empty()) return Refuse(error, kNoMemory);

    SqliteTransaction transaction(m_database);
    SqliteStatement insert;
    if (!insert.Prepare(m_database,
                        "INSERT INTO users (key, name, description, level, hash) "
                        "VALUES (?, ?, ?, ?, ?) RETURNING id")) {
        return Fail(error);
    }
    insert.BindText(1, text::ToUpper(user.name));
    insert.BindText(2, user.name);
    insert.BindText(3, user.description);
    insert.BindInteger(4, user.level);
    insert.BindText(5, hash);
    if (!insert.Next()) return Fail(error);
    const std::int64_t id = insert.Integer(0);
    insert.Reset();
    return (InsertList(m_database, "INSERT OR IGNORE INTO user_groups VALUES (?, ?)", id,
                       user.groups) &&
            InsertList(m_database, "INSERT OR IGNORE INTO user_addresses VALUES (?, ?)", id,
                       user.addresses) &&
            transaction.Commit()) ||
           Fail(error);
}

bool UserStore::SetPassword(std::string_view name, std::string_view password, std::string& error) {
    if (const char* fault = FaultOf(password)) return Refuse(error, fault);
    const std::string hash = HashPassword(password, m_cost);
    if (hash.empty()) return Refuse(error, kNoMemory);
    SqliteStatement update;
    if (!update.Prepare(m_database, "UPDATE users SET hash = ? WHERE key = ?")) return Fail(error);
    update.BindText(1, hash);
    update.BindText(2, text::ToUpper(name));
    if (!update.Run()) return Fail(error);
    return m_database.Changes() == 1 || Refuse(error, kNoUser);
}

bool UserStore::Remove(std::string_view name, std::string& error) {
    SqliteStatement remove;
    if (!remove.Prepare(m_database, "DELETE FROM users WHERE key = ?")) return Fail(error);
    remove.BindText(1, text::ToUpper(name));
    if (!remove.Run()) return Fail(error);
    return m_database.Changes() == 1 || Refuse(error, kNoUser);
}

bool UserStore::List(std::vector<UserRecord>& users, std::string& error) const {
    users.clear();
    SqliteStatement select;
    if (!select.Prepare(m_database, (std::string(kSelectUser) + "ORDER BY key").c_str())) {
        return Fail(error);
    }
    while (select.Next()) users.push_back(ReadUser(m_database, select));
    return !select.Failed() || Fail(error);
}

std::optional<UserRecord> UserStore::Find(std::string_view name) const {
    return FindIn(m_database, name).record;
}

UserFinding UserStore::FindAside(std::string_view name) const {
    if (m_path.empty()) return {};
    SqliteDatabase database;
    UserFinding finding;
    if (database.OpenExisting(m_path)) {
        database.SetLockWait(kShortWait);
        finding = FindIn(database, name);
    } else {
        finding.fault = text::FromUtf8(database.ErrorText());
    }
    if (!finding.fault.empty()) finding.fault.insert(0, text::FromUtf8(m_path) + ": ");
    return finding;
}

std::optional<UserRecord> UserStore::FindNow(std::string_view name) const {
    if (m_path.empty()) return std::nullopt;
    m_database.SetLockWait(0);
    UserFinding finding = FindIn(m_database, name);
    m_database.SetLockWait(kLockWait);
    const std::string key = text::ToUpper(name);
    if (!finding.fault.empty()) {
        const auto seen = m_lastSeen.find(key);
        return seen == m_lastSeen.end() ? std::nullopt : std::optional(seen->second);
    }
    if (finding.record) {
        m_lastSeen[key] = *finding.record;
    } else {
        m_lastSeen.erase(key);
    }
    return finding.record;
}

bool UserStore::CheckUserRight(std::string_view user, std::string_view right,
                               std::string_view address) const {
    const std::optional<UserRecord> record = FindNow(user);
    return record && HasRight(*record, right, address);
}

int UserStore::GetUserRightLevel(std::string_view user, std::string_view address) const {
    const std::optional<UserRecord> record = FindNow(user);
    return record && MayComeFrom(*record, address) ? record->level : 0;
}

std::vector<std::string> UserStore::GetGroups() const {
    std::vector<std::string> groups;
    SqliteStatement select;
    if (!select.Prepare(m_database, "SELECT DISTINCT name FROM user_groups ORDER BY name")) {
        return groups;
    }
    while (select.Next()) groups.push_back(select.Text(0));
    return groups;
}

}  // namespace kalvex::platform
