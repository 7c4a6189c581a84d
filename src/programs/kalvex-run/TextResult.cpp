#include "programs/kalvex-run/TextResult.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "programs/ShownValues.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::run {

namespace {

enum Column { ColumnName, ColumnKind, ColumnValue, ColumnStatus, ColumnTime, ColumnCount };
using Row = std::array<std::string, ColumnCount>;

constexpr std::string_view kGap = "  ";

std::size_t Width(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; }));
}

Row ValueRow(std::string name, std::string_view kind, const value::CVal& value) {
    return {std::move(name), std::string(kind), programs::ShownContent(value),
            programs::ShownStatus(value.GetStatus()),
            value.GetTime() == 0 ? "" : value::FormatLocalTime(value.GetTime())};
}

void AddSlots(operands::CVariable& variable, std::string_view kind, std::vector<Row>& rows) {
    const std::string name = text::ToUtf8(variable.GetName());
    for (const value::ValueKindRow& slot : value::ValueKinds()) {
        if (slot.kind == value::KindArchive) continue;
        const value::CVal value = StoredValue(variable, slot.kind);
        if (slot.kind == value::KindCurrent) {
            rows.push_back(ValueRow(name, kind, value));
        } else if (value.GetType() != value::ValueType::None) {
            rows.push_back(ValueRow(fmt::format("  .{}", slot.suffix), "", value));
        }
    }
}

void AddElements(const operands::CVariableList& list, std::vector<Row>& rows) {
    rows.push_back(
        {text::ToUtf8(list.GetName()), "LIST",
         fmt::format("{} elements, iterator {}", list.Elements().size(), list.GetIterator()), "",
         ""});
    for (std::size_t i = 0; i < list.Elements().size(); ++i) {
        rows.push_back(ValueRow(fmt::format("  [{}]", i), "", list.Elements()[i]));
    }
}

void AddVariable(operands::CVariable& variable, std::vector<Row>& rows) {
    switch (variable.GetKind()) {
        case operands::VariableList:
            return AddElements(static_cast<const operands::CVariableList&>(variable), rows);
        case operands::VariablePointer: {
            const auto& pointer = static_cast<const operands::CVariablePointer&>(variable);
            rows.push_back({text::ToUtf8(pointer.GetName()), "POINTER",
                            "-> " + text::ToUtf8(pointer.GetTargetName()), "", ""});
            return;
        }
        case operands::VariableRemote:
            return AddSlots(variable, "REMOTE", rows);
        default:
            return AddSlots(variable, "LOCAL", rows);
    }
}

std::string Line(const Row& row, const std::array<std::size_t, ColumnCount>& widths) {
    std::string line;
    for (std::size_t column = 0; column < row.size(); ++column) {
        if (column > 0) line += kGap;
        line += row[column];
        line.append(widths[column] - Width(row[column]), ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + '\n';
}

std::string Place(const RunScript& script) {
    const engine::CKalvexDoc& document = script.Document();
    const engine::RunState& state = document.State();
    const operands::ErrorSlot& error = document.LastError();
    const bool waiting = error.IsWaiting() && state.m_nReportedLine == state.m_nCurrentLine;
    if (script.IsFailed() || waiting) {
        return text::ToUtf8(document.FormatErrorReport(state.m_nCurrentLine, error.m_nErrorCode,
                                                       error.m_strErrorText));
    }
    if (script.IsRefused() && !script.IsStarted()) return " : refused at its start";
    if (script.IsFinished()) return " : finished";
    const int line = state.m_nCurrentLine + 1;
    if (state.m_bPaused) return fmt::format(" : stopped before line {}", line);
    return state.m_bRunning ? fmt::format(" : at line {}", line) : " : not running";
}

}  // namespace

std::string VariableTable(const operands::VariableTable& variables) {
    if (variables.GetSize() == 0) return {};
    std::vector<Row> rows = {{"NAME", "KIND", "VALUE", "STATUS", "TIME"}};
    for (const std::unique_ptr<operands::CVariable>& variable : variables)
        AddVariable(*variable, rows);
    std::array<std::size_t, ColumnCount> widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], Width(row[column]));
        }
    }
    std::string table;
    for (const Row& row : rows) table += Line(row, widths);
    return table;
}

std::string TextResult(const Runner& runner) {
    std::string text;
    for (const std::unique_ptr<RunScript>& script : runner.Scripts()) {
        const engine::CKalvexDoc& document = script->Document();
        text += '\n' + text::ToUtf8(document.GetPathName()) + Place(*script) + '\n';
        text += VariableTable(document.Variables());
    }
    return text;
}

}  // namespace kalvex::run
