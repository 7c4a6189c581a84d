// A statement of the language: the row of the keyword table and the call that its handler gets.
#pragma once

#include <span>
#include <string_view>
#include <unordered_map>

namespace kalvex {

class CKalvexDoc;

struct StatementCall {
    CKalvexDoc& document;
    std::string_view keyword;  // upper case
    std::string_view rest;     // the line behind the keyword; the handler takes its tokens off
    bool keepLine = false;     // not finished: the line runs again at the next due step
};

// True when the statement finished or waits without error; false leaves the reason in the error
// slot.
using StatementHandler = bool (*)(StatementCall&);

struct StatementRow {
    std::string_view keyword;  // upper case
    StatementHandler handler;
    std::string_view usage;  // forms as the help shows them, one a line, UTF-8
    std::string_view help;   // Polish, UTF-8; empty where there is none
};

// All statements, found by exact upper-case spelling. Built once from rows that outlive it.
class CStatementTable {
  public:
    explicit CStatementTable(std::span<const StatementRow> rows);
    const StatementRow* Find(std::string_view keyword) const;
    std::span<const StatementRow> Rows() const { return m_rows; }

  private:
    std::span<const StatementRow> m_rows;
    std::unordered_map<std::string_view, const StatementRow*> m_mapByKeyword;
};

}  // namespace kalvex
