#include "host/Programs.h"

#include <algorithm>

#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex::host {

namespace {

constexpr std::string_view kDirectoryOption = "-WD";

// The text of a token that names a variable.
bool ReadText(operands::ScriptContext& script, std::string_view token, std::string& out) {
    value::CVal value;
    if (operands::FindVariable(script, token) == nullptr) return false;
    if (!operands::EvaluateOperand(script, token, value, value::ValueType::Text, false))
        return false;
    out = value::ValueToText(value);
    return true;
}

bool IsDirectoryOption(std::string_view token, ExecForm form) {
    return form == ExecForm::Function ? token.starts_with(kDirectoryOption)
                                      : token == kDirectoryOption;
}

void AddParameter(ProgramLine& line, std::string_view text) {
    line.parameters += text;
    line.parameters += ' ';
}

// Whether there were quotes.
bool Unquote(std::string& text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') return false;
    text = text.substr(1, text.size() - 2);
    return true;
}

}  // namespace

ProgramLine ReadProgramLine(operands::ScriptContext& script, std::string_view text, ExecForm form) {
    ProgramLine line;
    while (true) {
        const std::string_view token = text::NextToken(text);
        if (token.empty()) break;
        std::string value;
        const bool isVariable = ReadText(script, token, value);
        if (line.program.empty()) {
            line.program = isVariable ? value : token;
        } else if (isVariable) {
            std::string_view rest = value;
            if (line.directory.empty() && rest.starts_with(kDirectoryOption)) {
                rest.remove_prefix(kDirectoryOption.size());
                line.directory = text::NextToken(rest);
            } else {
                AddParameter(line, value);
            }
        } else if (line.directory.empty() && IsDirectoryOption(token, form)) {
            line.directory = text::NextToken(text);
        } else {
            AddParameter(line, token);
        }
    }
    line.isQuoted = Unquote(line.program);
    Unquote(line.directory);
    return line;
}

std::vector<std::string> SplitParameters(std::string_view parameters) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    bool inQuotes = false;
    for (const char c : parameters) {
        if (c == '"') {
            inQuotes = !inQuotes;
            inWord = true;
        } else if (c == ' ' && !inQuotes) {
            if (inWord) words.push_back(std::move(word));
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord) words.push_back(std::move(word));
    return words;
}

void StartedPrograms::ClearRunState() {
    for (const int id : m_arrProcessHandles) m_processes.Release(id);
    m_arrProcessHandles.clear();
}

int StartedPrograms::Find(double id) const {
    const auto found = std::ranges::find_if(
        m_arrProcessHandles, [id](int handle) { return static_cast<double>(handle) == id; });
    return found == m_arrProcessHandles.end() ? 0 : *found;
}

}  // namespace kalvex::host
