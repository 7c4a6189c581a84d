#include "operands/Expression.h"

#include <algorithm>

#include "operands/FormulaParser.h"
#include "operands/Keywords.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "value/Bounds.h"

namespace kalvex::operands {

namespace {

// More formulas than results of functions usually lead to.
constexpr std::size_t kContinuations = 8;

bool EndsExpression(std::string_view token) {
    if (token.size() == 1) return token[0] == ';';
    static_assert(Keyword::Then.size() == Keyword::Goto.size());
    return token.size() == Keyword::Then.size() &&
           (text::EqualNoCase(token, Keyword::Then) || text::EqualNoCase(token, Keyword::Goto));
}

bool EvaluateOnce(ScriptContext& script, std::string_view text, value::CVal& out) {
    FormulaParser parser(script);
    std::string postfix;
    return parser.CompileFormula(text, postfix) && parser.EvaluatePostfix(out, postfix);
}

}  // namespace

Expression Expression::OfRest(std::string_view rest) {
    std::string joined;
    std::string_view token = text::NextToken(rest);
    const char* start = token.data();
    std::size_t length = 0;
    bool contiguous = true;  // the tokens stand in the line as they would be joined
    while (!token.empty() && !EndsExpression(token)) {
        if (length > 0 && contiguous && token.data() != start + length + 1) {
            joined.assign(start, length);
            contiguous = false;
        }
        if (!contiguous) {
            joined += ' ';
            joined += token;
        } else {
            length = static_cast<std::size_t>(token.data() + token.size() - start);
        }
        token = text::NextToken(rest);
    }
    return contiguous ? Expression(std::string_view(start, length)) : Expression(std::move(joined));
}

void Expression::Read(ScriptContext& script) {
    m_read = true;
    std::string_view rest = m_text;
    const std::string_view keyword = text::NextToken(rest);
    std::array<std::string_view, 3> tokens;
    for (std::string_view& token : tokens) token = text::NextToken(rest);
    if (const FunctionRow* row = script.Services().functions.Find(keyword)) {
        m_call = std::make_unique<Call>(
            Call{row, keyword, {Operand(tokens[0]), Operand(tokens[1]), Operand(tokens[2])}, rest});
    } else if (tokens[0].empty()) {
        m_operand = std::make_unique<Operand>(keyword);
    }
}

Expression::Call* Expression::FindCall(ScriptContext& script) {
    if (!m_read) Read(script);
    return m_call.get();
}

bool Expression::Evaluate(ScriptContext& script, value::CVal& out, int wanted) {
    if (!m_read) Read(script);
    if (m_call != nullptr) return EvaluateCall(script, out, wanted);
    if (m_operand != nullptr && m_operand->Evaluate(script, out, wanted, true)) return true;
    return EvaluateFormula(script, out);
}

bool Expression::EvaluateFormula(ScriptContext& script, value::CVal& out) {
    if (m_formula == nullptr) {
        if (!script.Services().keepForms) return EvaluateOnce(script, m_text, out);
        m_formula = std::make_unique<Formula>(m_text);
    }
    return m_formula->Evaluate(script, out);
}

bool Expression::EvaluateCall(ScriptContext& script, value::CVal& out, int wanted) {
    FunctionCall call{script,       m_call->keyword, m_call->arguments,
                      m_call->rest, m_text,          wanted,
                      out,          m_call->form,    {}};
    const FunctionResult result = m_call->function->handler(call);
    if (out.IsText()) value::CheckTextSize(out.Text().size());
    if (result != FunctionResult::Continues) return result == FunctionResult::Done;
    if (!script.Services().keepForms) return EvaluateOnce(script, call.formula, out);
    return FormulaOf(std::move(call.formula)).Evaluate(script, out);
}

Formula& Expression::FormulaOf(std::string text) {
    std::vector<Continuation>& known = m_call->continuations;
    const auto found = std::ranges::find(known, text, &Continuation::text);
    if (found != known.end()) return *found->formula;
    if (known.size() == kContinuations) known.erase(known.begin());
    auto formula = std::make_unique<Formula>(text);
    return *known.emplace_back(Continuation{std::move(text), std::move(formula)}).formula;
}

}  // namespace kalvex::operands
