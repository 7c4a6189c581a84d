#include "platform/Sqlite.h"

#include <sqlite3.h>

#include "text/CodePage.h"

namespace kalvex::platform {

namespace {

constexpr int kExisting = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;

}  // namespace

bool SqliteDatabase::Open(const std::string& path) {
    return Open(path, kExisting | SQLITE_OPEN_CREATE);
}

bool SqliteDatabase::OpenExisting(const std::string& path) {
    return Open(path, kExisting);
}

bool SqliteDatabase::Open(const std::string& path, int flags) {
    Close();
    if (sqlite3_open_v2(path.c_str(), &m_database, flags, nullptr) != SQLITE_OK) return false;
    sqlite3_busy_timeout(m_database, kLockWait);
    return true;
}

void SqliteDatabase::SetLockWait(int milliseconds) {
    sqlite3_busy_timeout(m_database, milliseconds);
}

void SqliteDatabase::Close() {
    sqlite3_close_v2(m_database);
    m_database = nullptr;
}

bool SqliteDatabase::Execute(const char* sql) {
    return sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::string SqliteDatabase::ErrorText() const {
    return sqlite3_errmsg(m_database);
}

std::int64_t SqliteDatabase::Changes() const {
    return sqlite3_changes64(m_database);
}

SqliteStatement::~SqliteStatement() {
    sqlite3_finalize(m_statement);
}

bool SqliteStatement::Prepare(SqliteDatabase& database, const char* sql) {
    sqlite3_finalize(m_statement);
    m_statement = nullptr;
    return sqlite3_prepare_v3(database.Get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &m_statement,
                              nullptr) == SQLITE_OK;
}

void SqliteStatement::BindInteger(int parameter, std::int64_t value) {
    sqlite3_bind_int64(m_statement, parameter, value);
}

void SqliteStatement::BindReal(int parameter, double value) {
    sqlite3_bind_double(m_statement, parameter, value);
}

void SqliteStatement::BindText(int parameter, std::string_view text) {
    const std::string utf8 = text::ToUtf8(text);
    sqlite3_bind_text64(m_statement, parameter, utf8.data(), utf8.size(), SQLITE_TRANSIENT,
                        SQLITE_UTF8);
}

void SqliteStatement::BindNull(int parameter) {
    sqlite3_bind_null(m_statement, parameter);
}

bool SqliteStatement::Next() {
    const int result = sqlite3_step(m_statement);
    m_failed = result != SQLITE_ROW && result != SQLITE_DONE;
    return result == SQLITE_ROW;
}

std::int64_t SqliteStatement::Integer(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

double SqliteStatement::Real(int column) const {
    return sqlite3_column_double(m_statement, column);
}

std::string SqliteStatement::Text(int column) const {
    const unsigned char* text = sqlite3_column_text(m_statement, column);
    if (text == nullptr) return {};
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
    return text::FromUtf8({reinterpret_cast<const char*>(text), size});
}

bool SqliteStatement::IsNull(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

void SqliteStatement::Reset() {
    sqlite3_reset(m_statement);
}

bool SqliteStatement::Run() {
    while (Next()) {
    }
    Reset();
    return !m_failed;
}

SqliteTransaction::SqliteTransaction(SqliteDatabase& database)
    : m_database(database), m_open(database.Execute("BEGIN IMMEDIATE")) {}

SqliteTransaction::~SqliteTransaction() {
    if (m_open) m_database.Execute("ROLLBACK");
}

bool SqliteTransaction::Commit() {
    if (!m_open || !m_database.Execute("COMMIT")) return false;
    m_open = false;
    return true;
}

}  // namespace kalvex::platform
