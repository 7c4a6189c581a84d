// A statement of the language: the row of the keyword table and the call that its handler gets.
#pragma once

#include <span>
#include <string_view>
#include <unordered_map>

namespace kalvex::engine {

class CKalvexDoc;

struct StatementCall {
    CKalvexDoc& document;
    std::string_view keyword;  // upper case
    std::string_view rest;     // the line behind the keyword; the handler takes its tokens off
};

// What became of a line. One that has not finished runs again at the next due step.
enum class LineOutcome {
    Finished,  // the script moves on
    Stays,     // the statement waits, without error
    Failed,    // the reason is in the error slot
};

constexpr LineOutcome FinishedIf(bool succeeded) {
    return succeeded ? LineOutcome::Finished : LineOutcome::Failed;
}

using StatementHandler = LineOutcome (*)(StatementCall&);

struct StatementRow {
    std::string_view keyword;  // upper case
    StatementHandler handler;
    std::string_view usage;  // forms as the help shows them, one a line, UTF-8
    std::string_view help;   // Polish, UTF-8; empty where there is none
};

// All statements, found by exact upper-case spelling. Built once from rows that outlive it.
class StatementTable {
  public:
    explicit StatementTable(std::span<const StatementRow> rows);
    const StatementRow* Find(std::string_view keyword) const;
    std::span<const StatementRow> Rows() const { return m_rows; }

  private:
    std::span<const StatementRow> m_rows;
    std::unordered_map<std::string_view, const StatementRow*> m_byKeyword;
};

}  // namespace kalvex::engine
