#include "operands/FormulaParser.h"

#include <algorithm>
#include <array>

#include "operands/Comparisons.h"
#include "operands/FormulaOperators.h"
#include "operands/OperandEvaluator.h"
#include "text/Characters.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

// The first pass. `negative` says that a "-" now means the unary minus.
class Compiler {
  public:
    Compiler(std::string_view text, Postfix& postfix) : m_text(text), m_postfix(postfix) {}

    bool Run() {
        while (m_position < m_text.size() && m_text[m_position] != ';') {
            if (!CompileAt(m_text[m_position])) return false;
        }
        return Flush();
    }

  private:
    bool Fail(ScriptError code) {
        m_count = 0;
        if (m_postfix.error == ErrorNone) m_postfix.error = code;
        return false;
    }

    char Next() const { return m_position < m_text.size() ? m_text[m_position] : '\0'; }

    void SkipBlanks() {
        while (Next() == ' ' || Next() == '\t') ++m_position;
    }

    void Push(char letter) {
        if (m_count == m_stack.size()) {
            Fail(ErrorStackOverflow);
        } else {
            m_stack[m_count++] = letter;
        }
    }

    char Pop() { return m_count == 0 ? '\0' : m_stack[--m_count]; }

    void Write(char letter) {
        const FormulaOperator* row = FindOperatorByLetter(letter);
        if (row != nullptr) {
            m_postfix.text += row->text;
        } else {
            m_postfix.text += letter;
        }
        m_postfix.text += ' ';
    }

    bool CompileAt(char c) {
        if (c == ' ' || c == '\t') {
            ++m_position;
            return true;
        }
        if (c == ',') return CompileComma();
        if (text::IsLetterOrDigit(c) || c == '.') return CompileWord();
        ++m_position;
        if (c == '(') return OpenBracket();
        if (c == ')') return CloseBracket();
        return CompileOperator(c);
    }

    bool CompileComma() {
        ++m_position;
        if (m_count > 0 && m_stack[m_count - 1] == FormulaLetter::UnaryMinus) Write(Pop());
        return true;
    }

    bool CompileWord() {
        const std::size_t start = m_position;
        while (m_position < m_text.size() &&
               (text::IsLetterOrDigit(m_text[m_position]) || m_text[m_position] == '.' ||
                m_text[m_position] == '_')) {
            ++m_position;
        }
        const std::string_view word = m_text.substr(start, m_position - start);
        m_negative = false;
        const FormulaOperator* function = FindFunction(word);
        if (function == nullptr) {
            m_postfix.text += word;
            m_postfix.text += ' ';
            return true;
        }
        SkipBlanks();
        Push(function->letter);
        return Next() == '(' || Fail(ErrorBadFunction);
    }

    static const FormulaOperator* FindFunction(std::string_view word) {
        constexpr std::size_t kShortest = 2;
        constexpr std::size_t kLongest = 9;
        if (word.size() < kShortest || word.size() > kLongest) return nullptr;
        std::array<char, kLongest> upper;
        for (std::size_t i = 0; i < word.size(); ++i) {
            upper[i] = static_cast<char>(text::ToUpper(static_cast<unsigned char>(word[i])));
        }
        return FindFunctionByName({upper.data(), word.size()});
    }

    bool OpenBracket() {
        Push('(');
        SkipBlanks();
        if (Next() == '-') m_negative = true;
        return true;
    }

    bool CloseBracket() {
        for (;;) {
            if (m_count == 0) return Fail(ErrorBadEquation);
            const char top = Pop();
            if (top == '(') return true;
            Write(top);
        }
    }

    // The letter of the operator that begins with c, its further characters taken; 0 for a "=" that
    // belongs to nothing.
    char TakeOperator(char c) {
        if (m_negative && c == '-') {
            c = FormulaLetter::UnaryMinus;
            m_negative = false;
        } else if ((c == '&' || c == '|') && Next() == c) {
            c = c == '&' ? FormulaLetter::And : FormulaLetter::Or;
            ++m_position;
        }
        if (Next() != '=') return c;
        ++m_position;
        const std::array<char, 2> text = {c, '='};
        const Comparison* comparison = FindComparison({text.data(), text.size()});
        return comparison == nullptr ? '\0' : comparison->letter;
    }

    static bool IsWrittenBefore(char top, char c) {
        const FormulaOperator* waiting = FindOperatorByLetter(top);
        if (waiting == nullptr || waiting->binding == 0) return false;
        if (waiting->binding == kBindsFirst) return true;
        const FormulaOperator* coming = FindOperatorByLetter(c);
        return coming == nullptr || coming->binding <= waiting->binding;
    }

    bool CompileOperator(char first) {
        const char c = TakeOperator(first);
        if (c == '\0') return Fail(ErrorBadOperator);
        char top = Pop();
        while (IsWrittenBefore(top, c)) {
            Write(top);
            top = Pop();
        }
        constexpr std::string_view kNeverSecond = "|^&~+*/%#";
        if (m_position < m_text.size() && kNeverSecond.find(Next()) != std::string_view::npos) {
            return Fail(ErrorBadEquation);
        }
        Push(top);
        Push(c);
        SkipBlanks();
        m_negative = Next() == '-';
        return true;
    }

    bool Flush() {
        for (char top = Pop(); top != '\0'; top = Pop()) {
            if (top == '(') return Fail(ErrorBadEquation);
            Write(top);
        }
        return true;
    }

    std::string_view m_text;
    Postfix& m_postfix;
    std::size_t m_position = 0;
    bool m_negative = true;
    std::array<char, FormulaStack::kCells> m_stack;
    std::size_t m_count = 0;
};

bool HoldsLetter(std::string_view token) {
    for (char c : token) {
        if (text::IsLetterOrDigit(c) && !text::IsDigit(c)) return true;
    }
    return false;
}

}  // namespace

Postfix CompileToPostfix(std::string_view text) {
    Postfix postfix;
    postfix.text.reserve(2 * text.size() + 8);
    postfix.succeeded = Compiler(text, postfix).Run();
    return postfix;
}

std::string_view PostfixTokens::Next() {
    const std::string_view token = m_rest.substr(0, m_rest.find(' '));
    m_rest.remove_prefix(std::min(token.size() + 1, m_rest.size()));
    return token;
}

PostfixToken ReadPostfixToken(std::string_view token) {
    double number = 0;
    const char first = token[0];
    if ((text::IsDigit(first) || first == '.') && value::ConvertString2Double(token, &number)) {
        if (HoldsLetter(token)) return {PostfixKind::NotANumber, 0, nullptr};
        return {PostfixKind::Number, number, nullptr};
    }
    if (const FormulaOperator* row = FindOperatorByText(token)) {
        return {PostfixKind::Operator, 0, row};
    }
    return {PostfixKind::Operand, 0, nullptr};
}

bool ApplyOperator(const FormulaOperator& row, FormulaStack& stack) {
    return row.apply(stack, row) || stack.Script().Fail(ErrorBadEquation);
}

bool FormulaParser::CompileFormula(std::string_view text, std::string& postfix) {
    Postfix compiled = CompileToPostfix(text);
    postfix = std::move(compiled.text);
    if (compiled.error != ErrorNone) m_script.SetError(compiled.error, {}, false);
    return compiled.succeeded;
}

bool FormulaParser::EvaluateToken(FormulaStack& stack, std::string_view token) {
    const PostfixToken read = ReadPostfixToken(token);
    switch (read.kind) {
        case PostfixKind::NotANumber:
            return false;
        case PostfixKind::Number:
            stack.Push(value::CVal(read.number));
            return true;
        case PostfixKind::Operator:
            return ApplyOperator(*read.row, stack);
        case PostfixKind::Operand:
            break;
    }
    value::CVal operand;
    if (!EvaluateOperand(m_script, token, operand, value::ValueType::Double, true)) {
        return m_script.Fail(ErrorRemoteValue);
    }
    stack.Push(std::move(operand));
    return true;
}

bool FormulaParser::EvaluatePostfix(value::CVal& out, std::string_view postfix) {
    FormulaStack stack(m_script);
    PostfixTokens tokens(postfix);
    for (std::string_view token = tokens.Next(); !token.empty(); token = tokens.Next()) {
        if (!EvaluateToken(stack, token)) return false;
    }
    out = stack.Pop();
    return true;
}

}  // namespace kalvex::operands
