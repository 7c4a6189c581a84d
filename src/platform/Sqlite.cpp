#include "platform/Sqlite.h"

#include <sqlite3.h>

#include "text/CodePage.h"

namespace kalvex::platform {

namespace {

constexpr int kLockWait = 5000;  // ms

}  // namespace

bool SqliteDatabase::Open(const std::string& path) {
    Close();
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(path.c_str(), &m_pDatabase, kFlags, nullptr) != SQLITE_OK) return false;
    sqlite3_busy_timeout(m_pDatabase, kLockWait);
    return true;
}

void SqliteDatabase::Close() {
    sqlite3_close(m_pDatabase);
    m_pDatabase = nullptr;
}

bool SqliteDatabase::Execute(const char* sql) {
    return sqlite3_exec(m_pDatabase, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::string SqliteDatabase::ErrorText() const {
    return sqlite3_errmsg(m_pDatabase);
}

std::int64_t SqliteDatabase::Changes() const {
    return sqlite3_changes64(m_pDatabase);
}

SqliteStatement::~SqliteStatement() {
    sqlite3_finalize(m_pStatement);
}

bool SqliteStatement::Prepare(SqliteDatabase& database, const char* sql) {
    sqlite3_finalize(m_pStatement);
    m_pStatement = nullptr;
    return sqlite3_prepare_v3(database.Get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &m_pStatement,
                              nullptr) == SQLITE_OK;
}

void SqliteStatement::BindInteger(int parameter, std::int64_t value) {
    sqlite3_bind_int64(m_pStatement, parameter, value);
}

void SqliteStatement::BindReal(int parameter, double value) {
    sqlite3_bind_double(m_pStatement, parameter, value);
}

void SqliteStatement::BindText(int parameter, std::string_view text) {
    const std::string utf8 = text::ToUtf8(text);
    sqlite3_bind_text64(m_pStatement, parameter, utf8.data(), utf8.size(), SQLITE_TRANSIENT,
                        SQLITE_UTF8);
}

void SqliteStatement::BindNull(int parameter) {
    sqlite3_bind_null(m_pStatement, parameter);
}

bool SqliteStatement::Next() {
    const int result = sqlite3_step(m_pStatement);
    m_fFailed = result != SQLITE_ROW && result != SQLITE_DONE;
    return result == SQLITE_ROW;
}

std::int64_t SqliteStatement::Integer(int column) const {
    return sqlite3_column_int64(m_pStatement, column);
}

double SqliteStatement::Real(int column) const {
    return sqlite3_column_double(m_pStatement, column);
}

std::string SqliteStatement::Text(int column) const {
    const unsigned char* text = sqlite3_column_text(m_pStatement, column);
    if (text == nullptr) return {};
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_pStatement, column));
    return text::FromUtf8({reinterpret_cast<const char*>(text), size});
}

bool SqliteStatement::IsNull(int column) const {
    return sqlite3_column_type(m_pStatement, column) == SQLITE_NULL;
}

void SqliteStatement::Reset() {
    sqlite3_reset(m_pStatement);
}

bool SqliteStatement::Run() {
    while (Next()) {
    }
    Reset();
    return !m_fFailed;
}

SqliteTransaction::SqliteTransaction(SqliteDatabase& database)
    : m_database(database), m_fOpen(database.Execute("BEGIN IMMEDIATE")) {}

SqliteTransaction::~SqliteTransaction() {
    if (m_fOpen) m_database.Execute("ROLLBACK");
}

bool SqliteTransaction::Commit() {
    if (!m_fOpen || !m_database.Execute("COMMIT")) return false;
    m_fOpen = false;
    return true;
}

}  // namespace kalvex::platform
