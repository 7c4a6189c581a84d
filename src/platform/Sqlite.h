// One connection to an SQLite file and its prepared statements. A connection and its statements
// belong to one thread at a time. Texts are engine texts (Windows-1250) here and UTF-8 in the file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace kalvex::platform {

// Milliseconds for which a lock is waited for unless another time is set.
inline constexpr int kLockWait = 5000;

class SqliteDatabase {
  public:
    SqliteDatabase() = default;
    ~SqliteDatabase() { Close(); }
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    // Opens the file and makes it if it is not there. A lock that another connection holds is
    // waited for, some seconds at most.
    bool Open(const std::string& path);
    // The same; a file that is not there does not open.
    bool OpenExisting(const std::string& path);
    void Close();  // it lets go of the file when the last of its statements has gone, too

    // How long a lock that another connection holds is waited for.
    void SetLockWait(int milliseconds);

    // One statement or several, without results.
    bool Execute(const char* sql);

    // The words for the last failure (UTF-8).
    std::string ErrorText() const;

    // Rows that the last statement has changed.
    std::int64_t Changes() const;

    sqlite3* Get() const { return m_database; }

  private:
    bool Open(const std::string& path, int flags);

    sqlite3* m_database = nullptr;
};

class SqliteStatement {
  public:
    SqliteStatement() = default;
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    // False leaves the words with the database.
    bool Prepare(SqliteDatabase& database, const char* sql);

    // Parameters count from 1, as they stand in the statement.
    void BindInteger(int parameter, std::int64_t value);
    void BindReal(int parameter, double value);
    void BindText(int parameter, std::string_view text);
    void BindNull(int parameter);

    // Brings the next row; false when there is none and when the statement failed.
    bool Next();
    bool Failed() const { return m_failed; }

    // Columns of the row count from 0. Null reads as 0 and as the empty text.
    std::int64_t Integer(int column) const;
    double Real(int column) const;
    std::string Text(int column) const;
    bool IsNull(int column) const;

    // Ends the run of the statement; the parameters stay bound. Runs without results end here too.
    void Reset();
    // Runs it to its end and resets it: false when it failed.
    bool Run();

  private:
    sqlite3_stmt* m_statement = nullptr;
    bool m_failed = false;
};

// A transaction that is taken back unless it was committed.
class SqliteTransaction {
  public:
    explicit SqliteTransaction(SqliteDatabase& database);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    bool Begun() const { return m_open; }
    bool Commit();

  private:
    SqliteDatabase& m_database;
    bool m_open;
};

}  // namespace kalvex::platform
