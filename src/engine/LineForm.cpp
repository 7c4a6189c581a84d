#include "engine/LineForm.h"

#include <utility>

#include "engine/ScriptDocument.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

LineOutcome PassLine(CKalvexDoc&, LineForm&) {
    return LineOutcome::Finished;
}

LineOutcome FailAtWord(CKalvexDoc& document, LineForm& line) {
    return document.Fail(operands::ErrorUnknownKeyword, line.Word());
}

// Lines that are no statements.
constexpr StatementRow kNothing{{}, PassLine, {}, {}};
constexpr StatementRow kUnknownWord{{}, FailAtWord, {}, {}};

}  // namespace

LineForm::LineForm(std::string_view line, const StatementTable& statements)
    : text(line), row(&kNothing) {
    if (line.empty() || line.front() == ';' || line.front() == ':') return;
    row = statements.Find(text::ToUpper(text::NextToken(line)));
    if (row == nullptr) row = &kUnknownWord;
    restStart = static_cast<std::uint32_t>(text.size() - line.size());
}

bool LineForm::IsEmpty() const {
    return row == &kNothing;
}

LineOutcome StatementHandler::Read(CKalvexDoc& document, const LineForm& line) const {
    StatementCall call{document, line.row->keyword, line.Rest()};
    return m_reads(call);
}

std::string LineForm::Word() const {
    std::string_view line = text;
    return text::ToUpper(text::NextToken(line));
}

bool LineForms::WantsForm(int number) {
    const auto index = static_cast<std::size_t>(number);
    if (index >= m_haveRun.size()) m_haveRun.resize(index + 1);
    const bool hasRun = m_haveRun[index];
    m_haveRun[index] = true;
    return hasRun;
}

LineForm& LineForms::Keep(int number, std::string_view line, const StatementTable& statements) {
    const auto index = static_cast<std::size_t>(number);
    if (index >= m_forms.size()) m_forms.resize(m_haveRun.size());
    m_forms[index] = std::make_unique<LineForm>(line, statements);
    return *m_forms[index];
}

LineForm& RewrittenLines::Keep(int number, std::string text, const StatementTable& statements) {
    Line& line = m_lines[number];
    line.text = std::move(text);
    line.form = std::make_unique<LineForm>(line.text, statements);
    return *line.form;
}

RewrittenLines* RewrittenCalls::Find(const std::vector<CCallArg>& arguments) {
    constexpr char kEnd = '\n';  // no line holds one
    std::string key;
    for (const CCallArg& argument : arguments) {
        key.append(argument.strFormal).append(1, kEnd).append(argument.strActual).append(1, kEnd);
    }
    if (const auto found = m_calls.find(key); found != m_calls.end()) return &found->second;
    return m_calls.size() == kMostCalls ? nullptr : &m_calls[std::move(key)];
}

void RewrittenCalls::Clear() {
    m_calls.clear();
    m_lines = 0;
}

}  // namespace kalvex::engine
