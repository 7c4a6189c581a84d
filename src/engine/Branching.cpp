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

namespace kalvex {

namespace {

bool Is(std::string_view token, std::string_view keyword) {
    return EqualNoCase(token, keyword);
}

bool EndsCondition(std::string_view token) {
    return Is(token, Keyword::Goto) || Is(token, Keyword::Then) || token == ";";
}

// A lone "=" parts the sides as well, but compares nothing.
bool IsComparison(std::string_view token) {
    return token == "=" || FindComparison(token) != nullptr;
}

bool Connects(std::string_view token) {
    return token == "&" || token == "|";
}

// The comparisons of a condition that is no formula, one after the other from left to right.
class ComparisonChain {
  public:
    ComparisonChain(CKalvexDoc& document, std::string_view rest, int elseLine)
        : m_document(document), m_text(rest), m_nElseLine(elseLine) {
        std::erase_if(m_text, [](char c) { return c == '(' || c == ')'; });
        m_rest = m_text;
    }

    bool Run() {
        if (!ReadComparison()) return false;
        const int first = Evaluate();
        if (first != 0 && first != 1) return m_document.Fail(ErrorExpression);
        bool result = first == 1;
        if (result && !EndsComparison()) return false;
        while (Connects(m_token)) {
            const bool both = m_token == "&";
            if (!ReadComparison()) return false;
            const int next = Evaluate();
            if (next != 0 && next != 1) return m_document.Fail(ErrorExpression);
            result = both ? result && next == 1 : result || next == 1;
            if (!EndsComparison()) return false;
        }
        return Decide(result);
    }

  private:
    bool EndsComparison() const {
        return Is(m_token, Keyword::Goto) || Is(m_token, Keyword::Then) || Connects(m_token);
    }

    // Reads left side, operator and right side; the token behind them stays in m_token.
    bool ReadComparison() {
        m_left.clear();
        m_right.clear();
        m_token = {};
        ReadLeft();
        if (m_left == Keyword::Not) {
            m_bNot = true;
            m_left = m_token;
            m_token = NextToken(m_rest);
        }
        m_operator = m_token;
        if (FindConditionWord(m_left) != nullptr) {
            m_token = NextToken(m_rest);
            return true;
        }
        return ReadRight();
    }

    void ReadLeft() {
        while (!m_rest.empty() && !IsComparison(m_token)) {
            const std::string upper = ToUpper(m_token);
            if (upper == Keyword::Then || upper == Keyword::Goto) return;
            m_left += upper;
            m_token = NextToken(m_rest);
            if (m_left == Keyword::Not || FindConditionWord(m_left) != nullptr) return;
        }
    }

    // Here THEN and GOTO are known in upper case only.
    bool ReadRight() {
        while (!m_rest.empty()) {
            m_token = NextToken(m_rest);
            if (m_token == Keyword::Goto || m_token == Keyword::Then || Connects(m_token)) {
                return true;
            }
            m_right += m_token;
        }
        return m_document.Fail(ErrorNoComparison);
    }

    // A NOT in front of the first comparison inverts all later ones too.
    int Evaluate() {
        const int result = CompareOperands(m_document, m_left, m_right, m_operator);
        return result == 0 || result == 1 ? result ^ static_cast<int>(m_bNot) : -1;
    }

    bool Decide(bool result) {
        if (Is(m_token, Keyword::Goto) && result) return m_document.GotoLabel(NextToken(m_rest));
        if (Is(m_token, Keyword::Then) && !result) m_document.JumpTo(m_nElseLine);
        return true;
    }

    CKalvexDoc& m_document;
    std::string m_text;
    std::string_view m_rest;
    int m_nElseLine;
    std::string m_left;
    std::string m_right;
    std::string_view m_operator;
    std::string_view m_token;
    bool m_bNot = false;
};

}  // namespace

LineOutcome ExecuteIf(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const int elseLine =
        document.IfBlocks().Find(document, document.State().m_nCurrentLine).nElseLine;
    if (document.LastError().m_nErrorCode != ErrorNone) return LineOutcome::Failed;
    CVal value;
    std::string_view condition = call.rest;
    if (!EvaluateRest(document, condition, value, ValueType::Double)) {
        return FinishedIf(ComparisonChain(document, call.rest, elseLine).Run());
    }
    const bool holds = (value != CVal(0)) != 0;
    std::string_view token = NextToken(call.rest);
    while (!token.empty() && !EndsCondition(token)) token = NextToken(call.rest);
    if (Is(token, Keyword::Goto) && holds) {
        return FinishedIf(document.GotoLabel(NextToken(call.rest)));
    }
    if (Is(token, Keyword::Then) && !holds) document.JumpTo(elseLine);
    return LineOutcome::Finished;
}

LineOutcome ExecuteElse(StatementCall& call) {
    CKalvexDoc& document = call.document;
    int line = document.State().m_nCurrentLine;
    std::string first = FirstKeyword(document, line);
    while (first != Keyword::Endif && line < document.GetLineCount()) {
        if (first == Keyword::If) line = document.IfBlocks().Find(document, line).nEndifLine;
        ++line;
        first = FirstKeyword(document, line);
    }
    document.JumpTo(line);
    if (first == Keyword::Endif) return LineOutcome::Finished;
    return document.Fail(ErrorBadFunction, first);
}

LineOutcome ExecuteEndif(StatementCall&) {
    return LineOutcome::Finished;
}

LineOutcome ExecuteGoto(StatementCall& call) {
    return FinishedIf(call.document.GotoLabel(NextToken(call.rest)));
}

// The first line that is the label, or -1. A text that is not started may change between two lines
// and is searched anew.
int CKalvexDoc::FindLabel(std::string_view target) {
    if (!m_arrLineCache.empty()) {
        const auto found = m_mapLabels.find(target);
        return found == m_mapLabels.end() ? -1 : found->second;
    }
    const int count = GetLineCount();
    for (int line = 0; line < count; ++line) {
        std::string_view text = GetLine(line);
        if (text.starts_with(':') && NextToken(text) == target) return line;
    }
    return -1;
}

bool CKalvexDoc::GotoLabel(std::string_view label) {
    const std::string target = ':' + std::string(label);
    const int line = FindLabel(target);
    if (line < 0) return StopOnError(ErrorNoLabel, target);
    JumpTo(line);
    return true;
}

bool CKalvexDoc::CheckStructure() {
    int open = 0;
    const int count = GetLineCount();
    for (int line = 0; line < count; ++line) {
        std::string_view text = GetLine(line);
        if (text.empty() || text.front() == ';') continue;
        std::string_view token = NextToken(text);
        if (Is(token, Keyword::If)) {
            do token = NextToken(text);
            while (!token.empty() && !EndsCondition(token));
            if (Is(token, Keyword::Then)) ++open;
        } else if (Is(token, Keyword::Endif) && --open < 0) {
            LogLine(FormatErrorReport(line, ErrorStrayEndif, {}), LogErrors);
            return false;
        }
    }
    if (open == 0) return true;
    LogLine(" : " + GetErrorMessage(ErrorOpenIf), LogErrors);
    return false;
}

}  // namespace kalvex
