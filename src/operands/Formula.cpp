#include "operands/Formula.h"

#include <algorithm>
#include <array>

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
    if (m_error == ErrorNone) m_shape = FindShape();
    m_canBeReal = m_error == ErrorNone && CanBeReal();
    m_isPair = m_canBeReal && m_cells.size() == 2;
    m_compares = !m_cells.empty() && operands::IsComparison(m_cells.back().operation);
    m_onlyOperandsFail = m_cells.size() <= FormulaStack::kCells &&
                         std::ranges::all_of(m_cells, [](const Cell& cell) {
                             return cell.kind != CellKind::NotANumber &&
                                    (cell.row == nullptr || cell.operation != ValueOperation::None);
                         });
    m_cells.shrink_to_fit();
    m_operands.shrink_to_fit();
}

Formula::Shape Formula::FindShape() const {
    const auto isValue = [](const Cell& cell) {
        return cell.kind == CellKind::Number || cell.kind == CellKind::Operand;
    };
    const auto takesOne = [](const Cell& cell) {
        return cell.kind == CellKind::NumberOperator || cell.kind == CellKind::OperandOperator;
    };
    if (m_cells.empty() || !isValue(m_cells.front())) return Shape::Any;
    if (m_cells.size() == 1 && m_cells.front().kind == CellKind::Operand) return Shape::Operand;
    return std::all_of(m_cells.begin() + 1, m_cells.end(), takesOne) ? Shape::Row : Shape::Any;
}

// Its operators are those that ComputeReal knows, a comparison at most the last of them, and none
// of them finds the stack empty or too small.
bool Formula::CanBeReal() const {
    std::size_t depth = 0;
    for (const Cell& cell : m_cells) {
        const bool isLast = &cell == &m_cells.back();
        if (operands::IsComparison(cell.operation) && !isLast) return false;
        if (cell.kind == CellKind::Number || cell.kind == CellKind::Operand) {
            if (++depth > kMostReals) return false;
        } else if (cell.operation == ValueOperation::None) {
            return false;
        } else if (cell.kind == CellKind::Operator) {
            if (depth-- < 2) return false;
        } else if (depth < 1) {
            return false;
        }
    }
    return depth == 1;
}

Formula::Cell Formula::ReadToken(std::string_view token) {
    const PostfixToken read = ReadPostfixToken(token);
    switch (read.kind) {
        case PostfixKind::Number:
            return {.kind = CellKind::Number, .row = nullptr, .number = read.number};
        case PostfixKind::NotANumber:
            return {.kind = CellKind::NotANumber, .row = nullptr, .number = 0};
        case PostfixKind::Operator:
            return {.kind = CellKind::Operator,
                    .operation = read.row->operation,
                    .row = read.row,
                    .number = 0};
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
    const bool takesAny = cell.operation != ValueOperation::None;
    if (cell.kind == CellKind::Operator && takesAny && !m_cells.empty()) {
        Cell& last = m_cells.back();
        if (last.kind == CellKind::Number || last.kind == CellKind::Operand) {
            last.kind = last.kind == CellKind::Number ? CellKind::NumberOperator
                                                      : CellKind::OperandOperator;
            last.row = cell.row;
            last.operation = cell.operation;
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
    if (FailsByName(script)) return true;
    value::CVal scratch;
    for (std::uint32_t i = 0; i < m_failing; ++i) {
        if (m_operands[i].Look(script, scratch, value::ValueType::Double) != nullptr) continue;
        NoteMiss(script, i);
        script.SetError(ErrorRemoteValue, {}, false);
        return true;
    }
    m_failing = 0;
    return false;
}

// Where all operands up to the missing one are there to be read, and that one is not, it is so as
// long as the names mean what they do.
void Formula::NoteMiss(ScriptContext& script, std::uint32_t operand) {
    m_failing = operand + 1;
    m_failedIn = script.Variables().Generation();
    const auto missing = m_operands.begin() + operand;
    m_failsByNames = m_error == ErrorNone && missing->IsUndefined(script) &&
                     std::all_of(m_operands.begin(), missing, [&script](Operand& before) {
                         return before.Held(script) != nullptr;
                     });
}

bool Formula::MissOperand(ScriptContext& script, const Cell& cell) {
    if (m_onlyOperandsFail) NoteMiss(script, cell.operand);
    return script.Fail(ErrorRemoteValue);
}

const value::CVal* Formula::LookForOperand(ScriptContext& script, value::CVal& scratch) {
    const value::CVal* const value =
        m_operands.front().Look(script, scratch, value::ValueType::Double);
    if (value == nullptr) script.SetError(ErrorRemoteValue, {}, false);
    return value;
}

inline void Formula::Take(const Cell& cell, value::CVal& out, const value::CVal& value) {
    if (cell.kind == CellKind::Operand) {
        out = value;
    } else {
        Combine(cell.operation, out, value);
    }
}

// Needs no stack: there is never more than one value on it.
bool Formula::EvaluateRow(ScriptContext& script, value::CVal& out) {
    for (const Cell& cell : m_cells) {
        if (cell.kind == CellKind::NumberOperator) {
            Combine(cell.operation, out, value::CVal(cell.number));
        } else if (cell.kind == CellKind::Number) {
            out = value::CVal(cell.number);
        } else if (const value::CVal* held = m_operands[cell.operand].Held(script)) {
            Take(cell, out, *held);
        } else if (!TakeFurther(script, cell, out)) {
            return false;
        }
    }
    return true;
}

bool Formula::TakeFurther(ScriptContext& script, const Cell& cell, value::CVal& out) {
    value::CVal scratch;
    const value::CVal* const value =
        m_operands[cell.operand].Look(script, scratch, value::ValueType::Double);
    if (value == nullptr) return MissOperand(script, cell);
    Take(cell, out, *value);
    return true;
}

// Doubles that carry neither status nor time, as most do, need no more than doubles. False where
// there is something else, with nothing changed.
bool Formula::ComputeReals(ScriptContext& script, double& out) {
    std::array<double, kMostReals> below;
    std::size_t depth = 0;
    double top = 0;
    for (const Cell& cell : m_cells) {
        double right = top;
        if (cell.kind == CellKind::Operator) {
            top = below[--depth];
        } else if (!ReadReal(script, cell, right)) {
            return false;
        }
        if (cell.operation == ValueOperation::None) {
            below[depth++] = top;
            top = right;
        } else {
            Combine(cell.operation, top, right);
        }
    }
    out = top;
    return true;
}

bool Formula::Evaluate(ScriptContext& script, value::CVal& out) {
    if (m_error != ErrorNone) script.SetError(m_error, {}, false);
    if (!m_compiled || (m_failing > 0 && FailsAgain(script))) return false;
    if (double real = 0; FindReal(script, real)) {
        out = m_compares ? value::CVal(static_cast<int>(real)) : value::CVal(real);
        return true;
    }
    if (m_shape == Shape::Row) return EvaluateRow(script, out);
    FormulaStack stack(script);
    for (const Cell& cell : m_cells) {
        if (!RunCell(cell, stack)) return false;
    }
    stack.PopInto(out);
    return true;
}

}  // namespace kalvex::operands
