// A statement of the language: the row of the keyword table and the call that its handler gets.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <unordered_map>

namespace kalvex::engine {

class CKalvexDoc;
struct LineForm;

// What a statement makes of the text behind its keyword, and of that alone: it sees no script when
// it is made. What it holds may remember of the script what does not change as long as the line
// stands, and look up anew what does.
class StatementForm {
  public:
    virtual ~StatementForm() = default;
    // Ahead of the line's turn: what it needs is fetched from memory meanwhile.
    virtual void Fetch() const {}
};

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

// Runs a statement: reads its line anew each time, or asks the line for the form that it keeps.
class StatementHandler {
  public:
    using Reading = LineOutcome (*)(StatementCall& call);
    using Keeping = LineOutcome (*)(CKalvexDoc& document, LineForm& line);

    constexpr StatementHandler(Reading reads) : m_reads(reads) {}
    constexpr StatementHandler(Keeping keeps) : m_keeps(keeps) {}
    bool operator==(const StatementHandler&) const = default;
    explicit operator bool() const { return m_reads != nullptr || m_keeps != nullptr; }

    LineOutcome operator()(CKalvexDoc& document, LineForm& line) const {
        return m_keeps != nullptr ? m_keeps(document, line) : Read(document, line);
    }

  private:
    LineOutcome Read(CKalvexDoc& document, const LineForm& line) const;

    Reading m_reads = nullptr;
    Keeping m_keeps = nullptr;
};

struct StatementRow {
    std::string_view keyword;  // upper case
    StatementHandler handler;
    std::string_view usage;   // forms as the help shows them, one a line, UTF-8
    std::string_view help;    // Polish, UTF-8; empty where there is none
    bool waitsAlike = false;  // where it waits for data it has only read by then, whatever it does
                              // otherwise
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
