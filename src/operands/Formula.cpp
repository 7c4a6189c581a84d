#include "operands/Formula.h"

#include <algorithm>

#include "operands/FormulaParser.h"
#include "value/ValueText.h"

namespace kalvex::operands {

Formula::Formula(std::string_view text) {
    Postfix compiled = CompileToPostfix(text);
    compiled.text.shrink_to_fit();
    m_postfix = std::move(compiled.text);
    m_error = compiled.error;
    m_compiled = compiled.succeeded;
    if (!m_compiled) return;
    PostfixTokens tokens(m_postfix);
    m_cells.reserve(static_cast<std::size_t>(std::ranges::count(m_postfix, ' ')));
    for (std::string_view token = tokens.Next(); !token.empty(); token = tokens.Next()) {
        Append(ReadToken(token));
    }
    const bool begins = !m_cells.empty() && (m_cells.front().kind == CellKind::Number ||
                                             m_cells.front().kind == CellKind::Operand);
    m_isOperand = m_cells.size() == 1 && m_cells.front().kind == CellKind::Operand;
    m_isRow =
        begins && std::all_of(m_cells.begin() + 1, m_cells.end(), [](const Cell& cell) {
            return cell.kind == CellKind::NumberOperator || cell.kind == CellKind::OperandOperator;
        });
    m_onlyOperandsFail = m_cells.size() <= FormulaStack::kCells &&
                         std::ranges::all_of(m_cells, [](const Cell& cell) {
                             return cell.kind != CellKind::NotANumber &&
                                    (cell.row == nullptr || cell.row->combine != nullptr);
                         });
    m_cells.shrink_to_fit();
    m_operands.shrink_to_fit();
}

Formula::Cell Formula::ReadToken(std::string_view token) {
    const PostfixToken read = ReadPostfixToken(token);
    switch (read.kind) {
        case PostfixKind::Number:
            return {.kind = CellKind::Number, .row = nullptr, .number = read.number};
        case PostfixKind::NotANumber:
            return {.kind = CellKind::NotANumber, .row = nullptr, .number = 0};
        case PostfixKind::Operator:
            return {.kind = CellKind::Operator, .row = read.row, .number = 0};
        case PostfixKind::Operand:
            break;
    }
    m_operands.emplace_back(token);
    return {.kind = CellKind::Operand,
            .row = nullptr,
            .operand = static_cast<std::uint32_t>(m_operands.size() - 1)};
}

// What an operator takes from the stack, and from just behind there, need not go onto it first.
void Formula::Append(Cell cell) {
    if (cell.kind == CellKind::Operator && cell.row->combine != nullptr && !m_cells.empty()) {
        Cell& last = m_cells.back();
        if (last.kind == CellKind::Number || last.kind == CellKind::Operand) {
            last.kind = last.kind == CellKind::Number ? CellKind::NumberOperator
                                                      : CellKind::OperandOperator;
            last.row = cell.row;
            return;
        }
    }
    m_cells.push_back(cell);
}

inline bool Formula::RunCell(const Cell& cell, FormulaStack& stack) {
    ScriptContext& script = stack.Script();
    switch (cell.kind) {
        case CellKind::Number:
            stack.Push(value::CVal(cell.number));
            return true;
        case CellKind::NumberOperator:
            return ApplyOperator(*cell.row, stack, value::CVal(cell.number));
        case CellKind::Operator:
            return ApplyOperator(*cell.row, stack);
        case CellKind::NotANumber:
            return false;
        case CellKind::Operand:
        case CellKind::OperandOperator:
            break;
    }
    value::CVal scratch;
    Operand& operand = m_operands[cell.operand];
    const value::CVal* const value = operand.Look(script, scratch, value::ValueType::Double);
    if (value == nullptr) return MissOperand(script, cell);
    if (cell.kind == CellKind::OperandOperator) return ApplyOperator(*cell.row, stack, *value);
    stack.Push(*value);
    return true;
}

// The condition of an IF that compares with a text is no formula, and is found to be none each time
// by an operand that is not there. What was to be computed before it leaves no trace.
bool Formula::FailsAgain(ScriptContext& script) {
    value::CVal scratch;
    for (std::uint32_t i = 0; i < m_failing; ++i) {
        if (m_operands[i].Look(script, scratch, value::ValueType::Double) != nullptr) continue;
        script.SetError(ErrorRemoteValue, {}, false);
        return true;
    }
    m_failing = 0;
    return false;
}

bool Formula::MissOperand(ScriptContext& script, const Cell& cell) {
    if (m_onlyOperandsFail) m_failing = cell.operand + 1;
    return script.Fail(ErrorRemoteValue);
}

const value::CVal* Formula::Look(ScriptContext& script, value::CVal& scratch) {
    if (!m_isOperand || m_error != ErrorNone) return Evaluate(script, scratch) ? &scratch : nullptr;
    const value::CVal* const value =
        m_operands.front().Look(script, scratch, value::ValueType::Double);
    if (value == nullptr) script.SetError(ErrorRemoteValue, {}, false);
    return value;
}

// Needs no stack: there is never more than one value on it.
bool Formula::EvaluateRow(ScriptContext& script, value::CVal& out) {
    for (const Cell& cell : m_cells) {
        if (cell.kind == CellKind::Number) {
            out = value::CVal(cell.number);
        } else if (cell.kind == CellKind::NumberOperator) {
            cell.row->combine(out, value::CVal(cell.number));
        } else {
            value::CVal scratch;
            const value::CVal* const value =
                m_operands[cell.operand].Look(script, scratch, value::ValueType::Double);
            if (value == nullptr) return MissOperand(script, cell);
            if (cell.kind == CellKind::Operand) {
                out = *value;
            } else {
                cell.row->combine(out, *value);
            }
        }
    }
    return true;
}

bool Formula::Evaluate(ScriptContext& script, value::CVal& out) {
    if (m_error != ErrorNone) script.SetError(m_error, {}, false);
    if (!m_compiled || (m_failing > 0 && FailsAgain(script))) return false;
    if (m_isRow) return EvaluateRow(script, out);
    FormulaStack stack(script);
    for (const Cell& cell : m_cells) {
        if (!RunCell(cell, stack)) return false;
    }
    stack.PopInto(out);
    return true;
}

}  // namespace kalvex::operands
