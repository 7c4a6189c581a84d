// Labels, IF, ELSE, ENDIF and GOTO.
#include "engine/IfBlocks.h"
#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/Comparisons.h"
#include "operands/Conditions.h"
#include "operands/Keywords.h"
#include "operands/OperandEvaluator.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

bool EndsCondition(std::string_view token) {
    return text::EqualNoCase(token, operands::Keyword::Goto) ||
           text::EqualNoCase(token, operands::Keyword::Then) || token == ";";
}

// A lone "=" parts the sides as well, but compares nothing.
bool IsComparison(std::string_view token) {
    return token == "=" || operands::FindComparison(token) != nullptr;
}

bool Connects(std::string_view token) {
    return token == "&" || token == "|";
}

// The comparisons of a condition that is no formula, one after the other from left to right.
class ComparisonChain {
  public:
    ComparisonChain(CKalvexDoc& document, std::string_view rest, int elseLine)
        : m_document(document), m_text(rest), m_elseLine(elseLine) {
        std::erase_if(m_text, [](char c) { return c == '(' || c == ')'; });
        m_rest = m_text;
    }

    bool Run() {
        if (!ReadComparison()) return false;
        const int first = Evaluate();
        if (first != 0 && first != 1) return m_document.Fail(operands::ErrorExpression);
        bool result = first == 1;
        if (result && !EndsComparison()) return false;
        while (Connects(m_token)) {
            const bool both = m_token == "&";
            if (!ReadComparison()) return false;
            const int next = Evaluate();
            if (next != 0 && next != 1) return m_document.Fail(operands::ErrorExpression);
            result = both ? result && next == 1 : result || next == 1;
            if (!EndsComparison()) return false;
        }
        return Decide(result);
    }

  private:
    bool EndsComparison() const {
        return text::EqualNoCase(m_token, operands::Keyword::Goto) ||
               text::EqualNoCase(m_token, operands::Keyword::Then) || Connects(m_token);
    }

    // Reads left side, operator and right side; the token behind them stays in m_token.
    bool ReadComparison() {
        m_left.clear();
        m_right.clear();
        m_token = {};
        ReadLeft();
        if (m_left == operands::Keyword::Not) {
            m_not = true;
            m_left = m_token;
            m_token = text::NextToken(m_rest);
        }
        m_operator = m_token;
        if (operands::FindConditionWord(m_left) != nullptr) {
            m_token = text::NextToken(m_rest);
            return true;
        }
        return ReadRight();
    }

    void ReadLeft() {
        while (!m_rest.empty() && !IsComparison(m_token)) {
            const std::string upper = text::ToUpper(m_token);
            if (upper == operands::Keyword::Then || upper == operands::Keyword::Goto) return;
            m_left += upper;
            m_token = text::NextToken(m_rest);
            if (m_left == operands::Keyword::Not || operands::FindConditionWord(m_left) != nullptr)
                return;
        }
    }

    // Here THEN and GOTO are known in upper case only.
    bool ReadRight() {
        while (!m_rest.empty()) {
            m_token = text::NextToken(m_rest);
            if (m_token == operands::Keyword::Goto || m_token == operands::Keyword::Then ||
                Connects(m_token)) {
                return true;
            }
            m_right += m_token;
        }
        return m_document.Fail(operands::ErrorNoComparison);
    }

    // A NOT in front of the first comparison inverts all later ones too.
    int Evaluate() {
        const int result = operands::CompareOperands(m_document, m_left, m_right, m_operator);
        return result == 0 || result == 1 ? result ^ static_cast<int>(m_not) : -1;
    }

    bool Decide(bool result) {
        if (text::EqualNoCase(m_token, operands::Keyword::Goto) && result)
            return m_document.GotoLabel(text::NextToken(m_rest));
        if (text::EqualNoCase(m_token, operands::Keyword::Then) && !result)
            m_document.JumpTo(m_elseLine);
        return true;
    }

    CKalvexDoc& m_document;
    std::string m_text;
    std::string_view m_rest;
    int m_elseLine;
    std::string m_left;
    std::string m_right;
    std::string_view m_operator;
    std::string_view m_token;
    bool m_not = false;
};

}  // namespace

LineOutcome ExecuteIf(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const int elseLine =
        document.IfBlocks().Find(document, document.State().m_nCurrentLine).nElseLine;
    if (document.LastError().m_nErrorCode != operands::ErrorNone) return LineOutcome::Failed;
    value::CVal value;
    std::string_view condition = call.rest;
    if (!operands::EvaluateRest(document, condition, value, value::ValueType::Double)) {
        return FinishedIf(ComparisonChain(document, call.rest, elseLine).Run());
    }
    const bool holds = (value != value::CVal(0)) != 0;
    std::string_view token = text::NextToken(call.rest);
    while (!token.empty() && !EndsCondition(token)) token = text::NextToken(call.rest);
    if (text::EqualNoCase(token, operands::Keyword::Goto) && holds) {
        return FinishedIf(document.GotoLabel(text::NextToken(call.rest)));
    }
    if (text::EqualNoCase(token, operands::Keyword::Then) && !holds) document.JumpTo(elseLine);
    return LineOutcome::Finished;
}

LineOutcome ExecuteElse(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const int end = document.IfBlocks().FindElseEnd(document, document.State().m_nCurrentLine);
    document.JumpTo(end);
    return FinishedIf(end < document.GetLineCount());
}

LineOutcome ExecuteEndif(StatementCall&) {
    return LineOutcome::Finished;
}

LineOutcome ExecuteGoto(StatementCall& call) {
    return FinishedIf(call.document.GotoLabel(text::NextToken(call.rest)));
}

bool CKalvexDoc::GotoLabel(std::string_view label) {
    const std::string target = ':' + std::string(label);
    const int line = m_arrLineCache.FindLabel(target);
    if (line < 0) return StopOnError(operands::ErrorNoLabel, target);
    JumpTo(line);
    return true;
}

bool CKalvexDoc::CheckStructure() {
    int open = 0;
    const int count = GetLineCount();
    for (int line = 0; line < count; ++line) {
        std::string_view text = GetLine(line);
        if (text.empty() || text.front() == ';') continue;
        std::string_view token = text::NextToken(text);
        if (text::EqualNoCase(token, operands::Keyword::If)) {
            do token = text::NextToken(text);
            while (!token.empty() && !EndsCondition(token));
            if (text::EqualNoCase(token, operands::Keyword::Then)) ++open;
        } else if (text::EqualNoCase(token, operands::Keyword::Endif) && --open < 0) {
            Report(line, operands::ErrorStrayEndif, {}, platform::LogErrors);
            return false;
        }
    }
    if (open == 0) return true;
    LogLine(" : " + GetErrorMessage(operands::ErrorOpenIf), platform::LogErrors);
    return false;
}

}  // namespace kalvex::engine
