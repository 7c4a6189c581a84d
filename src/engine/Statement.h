// A statement of the language: the row of the keyword table and the call that its handler gets.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <unordered_map>

namespace kalvex::engine {

class CKalvexDoc;

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
    std::unique_ptr<StatementForm>& form;  // kept with the line; made by its handler, if any

    // The line as this handler reads it, made from its rest unless other texts are given. A
    // handler has one form.
    template <class Form, class... Texts>
    Form& Read(Texts... texts) {
        if (form == nullptr) {
            if constexpr (sizeof...(texts) == 0) {
                form = std::make_unique<Form>(rest);
            } else {
                form = std::make_unique<Form>(texts...);
            }
        }
        return static_cast<Form&>(*form);
    }
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
