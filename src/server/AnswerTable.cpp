#include "server/AnswerTable.h"

namespace kalvex::server {

const char* AnswerTable::Schema() {
    return "CREATE TABLE IF NOT EXISTS answers (token TEXT NOT NULL, serial INTEGER NOT NULL, "
           "number INTEGER NOT NULL, result INTEGER NOT NULL, PRIMARY KEY (token, serial)) "
           "WITHOUT ROWID;";
}

bool AnswerTable::Prepare(platform::SqliteDatabase& database) {
    return m_put.Prepare(database, "INSERT OR REPLACE INTO answers VALUES (?, ?, ?, ?)") &&
           m_drop.Prepare(database, "DELETE FROM answers WHERE token = ? AND serial = ?") &&
           m_dropAll.Prepare(database, "DELETE FROM answers WHERE token = ?");
}

bool AnswerTable::Read(platform::SqliteDatabase& database, std::vector<SaveAnswer>& answers) const {
    platform::SqliteStatement select;
    if (!select.Prepare(database,
                        "SELECT token, serial, number, result FROM answers ORDER BY number")) {
        return false;
    }
    while (select.Next()) {
        answers.push_back({select.Text(0), static_cast<std::uint64_t>(select.Integer(1)),
                           select.Integer(2), static_cast<std::uint16_t>(select.Integer(3))});
    }
    return !select.Failed();
}

bool AnswerTable::Run(const SaveAnswer& operation) {
    m_put.BindText(1, operation.token);
    m_put.BindInteger(2, static_cast<std::int64_t>(operation.serial));
    m_put.BindInteger(3, operation.number);
    m_put.BindInteger(4, operation.result);
    return m_put.Run();
}

bool AnswerTable::Run(const DropAnswers& operation) {
    platform::SqliteStatement& statement = operation.serial == 0 ? m_dropAll : m_drop;
    statement.BindText(1, operation.token);
    if (operation.serial != 0) {
        statement.BindInteger(2, static_cast<std::int64_t>(operation.serial));
    }
    return statement.Run();
}

}  // namespace kalvex::server
