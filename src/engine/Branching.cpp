// Labels, IF, ELSE, ENDIF and GOTO.
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/IfBlocks.h"
#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/Comparisons.h"
#include "operands/Conditions.h"
#include "operands/Expression.h"
#include "operands/Keywords.h"
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
    explicit ComparisonChain(std::string_view rest) : m_text(rest) {
        std::erase_if(m_text, [](char c) { return c == '(' || c == ')'; });
        m_rest = m_text;
        do m_complete = ReadComparison();
        while (m_complete && Connects(m_token) && m_links.back().ends);
        if (text::EqualNoCase(m_token, operands::Keyword::Goto)) {
            m_target.emplace(text::NextToken(m_rest));
        }
        m_then = text::EqualNoCase(m_token, operands::Keyword::Then);
    }
    ComparisonChain(const ComparisonChain&) = delete;
    ComparisonChain& operator=(const ComparisonChain&) = delete;

    bool Run(CKalvexDoc& document, int elseLine) {
        bool result = false;
        for (Link& link : m_links) {
            const int compared = link.comparison.Evaluate(document);
            if (compared != 0 && compared != 1) return document.Fail(operands::ErrorExpression);
            const bool holds = (compared == 1) != link.inverted;
            result = link.connector == "&"   ? result && holds
                     : link.connector == "|" ? result || holds
                                             : holds;
            const bool mayBeEndless = link.connector.empty() && !result;
            if (!link.ends && !mayBeEndless) return false;
        }
        if (!m_complete) return document.Fail(operands::ErrorNoComparison);
        if (m_target && result) return document.GotoLabel(*m_target);
        if (m_then && !result) document.JumpTo(elseLine);
        return true;
    }

  private:
    struct Link {
        std::string_view connector;  // to what stands before
        operands::OperandComparison comparison;
        bool inverted;
        bool ends;  // behind it stands what may stand there
    };

    bool EndsComparison() const {
        return text::EqualNoCase(m_token, operands::Keyword::Goto) ||
               text::EqualNoCase(m_token, operands::Keyword::Then) || Connects(m_token);
    }

    // Reads left side, operator and right side; the token behind them stays in m_token. A NOT in
    // front of the first comparison inverts all later ones too.
    bool ReadComparison() {
        const std::string_view connector = m_token;
        std::string left = ReadLeft();
        if (left == operands::Keyword::Not) {
            m_not = true;
            left = m_token;
            m_token = text::NextToken(m_rest);
        }
        const std::string_view compare = m_token;
        std::string right;
        if (operands::FindConditionWord(left) != nullptr) {
            m_token = text::NextToken(m_rest);
        } else if (!ReadRight(right)) {
            return false;
        }
        m_links.push_back(
            {connector, {std::move(left), std::move(right), compare}, m_not, EndsComparison()});
        return true;
    }

    std::string ReadLeft() {
        std::string left;
        m_token = {};
        while (!m_rest.empty() && !IsComparison(m_token)) {
            const std::string upper = text::ToUpper(m_token);
            if (upper == operands::Keyword::Then || upper == operands::Keyword::Goto) break;
            left += upper;
            m_token = text::NextToken(m_rest);
            if (left == operands::Keyword::Not || operands::FindConditionWord(left) != nullptr)
                break;
        }
        return left;
    }

    // Here THEN and GOTO are known in upper case only.
    bool ReadRight(std::string& right) {
        while (!m_rest.empty()) {
            m_token = text::NextToken(m_rest);
            if (m_token == operands::Keyword::Goto || m_token == operands::Keyword::Then ||
                Connects(m_token)) {
                return true;
            }
            right += m_token;
        }
        return false;
    }

    std::string m_text;
    std::string_view m_rest;
    std::string_view m_token;
    bool m_not = false;
    std::vector<Link> m_links;
    bool m_complete;  // a last comparison without its end fails once it is reached
    std::optional<LabelTarget> m_target;
    bool m_then;
};

struct IfForm final : StatementForm {
    explicit IfForm(std::string_view text) : condition(operands::Expression::OfRest(text)) {
        std::string_view token = text::NextToken(text);
        while (!token.empty() && !EndsCondition(token)) token = text::NextToken(text);
        then = text::EqualNoCase(token, operands::Keyword::Then);
        if (text::EqualNoCase(token, operands::Keyword::Goto)) {
            target.emplace(text::NextToken(text));
        }
    }

    // Empty when it is no formula, or has no value.
    std::optional<bool> Holds(CKalvexDoc& document) {
        if (chain != nullptr && condition.FailsByName(document)) return std::nullopt;
        if (double real = 0; condition.FindReal(document, real)) return real != 0;
        value::CVal scratch;
        const value::CVal* const value =
            condition.Look(document, scratch, value::ValueType::Double);
        if (value == nullptr) return std::nullopt;
        return (*value != value::CVal(0)) != 0;
    }

    // Of the line of the form.
    ComparisonChain& Chain(std::string_view text) {
        if (chain == nullptr) chain = std::make_unique<ComparisonChain>(text);
        return *chain;
    }

    operands::Expression condition;
    std::unique_ptr<ComparisonChain> chain;  // of a condition that was no formula
    std::optional<LabelTarget> target;
    bool then;
    std::optional<int> elseLine;  // of a block without fault
};

struct GotoForm final : StatementForm {
    explicit GotoForm(std::string_view text) : target(text::NextToken(text)) {}

    LabelTarget target;
};

}  // namespace

LineOutcome ExecuteIf(StatementCall& call) {
    CKalvexDoc& document = call.document;
    auto& form = call.Read<IfForm>();
    if (!form.elseLine) {
        const CIfBlock& block = document.IfBlocks().Find(document, document.State().m_nCurrentLine);
        if (block.nError != 0) return LineOutcome::Failed;
        form.elseLine = block.nElseLine;
    }
    const std::optional<bool> condition = form.Holds(document);
    if (!condition) return FinishedIf(form.Chain(call.rest).Run(document, *form.elseLine));
    const bool holds = *condition;
    if (form.target && holds) return FinishedIf(document.GotoLabel(*form.target));
    if (form.then && !holds) document.JumpTo(*form.elseLine);
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
    return FinishedIf(call.document.GotoLabel(call.Read<GotoForm>().target));
}

bool CKalvexDoc::GotoLabel(LabelTarget& label) {
    if (label.line < 0) {
        const std::string token = ':' + std::string(label.label);
        label.line = m_arrLineCache.FindLabel(token);
        if (label.line < 0) return StopOnError(operands::ErrorNoLabel, token);
    }
    JumpTo(label.line);
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
