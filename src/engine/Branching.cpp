// Labels, IF, ELSE, ENDIF and GOTO.
#include <cstdint>
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
        m_isSingle = m_links.size() == 1 && m_complete && m_then;
    }
    ComparisonChain(const ComparisonChain&) = delete;
    ComparisonChain& operator=(const ComparisonChain&) = delete;

    // Remembers a condition of one comparison before THEN, where both sides are values that stay
    // where they are as long as the variables of the script stand. `name` is the one for which the
    // condition is no formula.
    void Settle(CKalvexDoc& document, std::string_view name) {
        if (!m_isSingle || !m_links.front().comparison.FindHeld(document, m_held)) return;
        m_name = name;
        m_settledIn = document.Variables().Generation();
    }
    bool IsSettled(const CKalvexDoc& document) const {
        return m_settledIn == document.Variables().Generation();
    }
    // What Run would find, with the error that the formula leaves.
    bool HoldsAsSettled(CKalvexDoc& document) const {
        document.LendError(operands::ErrorUndefinedVariable, m_name);
        return (m_held.Compare() == 1) != m_links.front().inverted;
    }

    bool Run(CKalvexDoc& document, int elseLine) {
        bool result = false;
        for (Link& link : m_links) {
            const int compared = link.comparison.Evaluate(document);
            if (compared != 0 && compared != 1) return document.Fail(operands::ErrorExpression);
            const bool holds = (compared == 1) != link.inverted;
            result = link.connector == '&'   ? result && holds
                     : link.connector == '|' ? result || holds
                                             : holds;
            const bool mayBeEndless = link.connector == kNoConnector && !result;
            if (!link.ends && !mayBeEndless) return false;
        }
        if (!m_complete) return document.Fail(operands::ErrorNoComparison);
        if (m_target && result) return document.GotoLabel(*m_target);
        if (m_then && !result) document.JumpTo(elseLine);
        return true;
    }

  private:
    static constexpr char kNoConnector = '\0';

    struct Link {
        char connector;  // to what stands before
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
        const char connector = Connects(m_token) ? m_token.front() : kNoConnector;
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
    bool m_isSingle;
    std::optional<std::uint32_t> m_settledIn;  // the generation of the variables
    operands::HeldComparison m_held;
    std::string_view m_name;
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

    [[gnu::noinline]] bool FindBlock(CKalvexDoc& document) {
        const CIfBlock& block = document.IfBlocks().Find(document, document.State().m_nCurrentLine);
        if (block.nError == 0) elseLine = block.nElseLine;
        return block.nError == 0;
    }

    LineOutcome Branch(CKalvexDoc& document, bool holds) {
        if (target && holds) return FinishedIf(document.GotoLabel(*target));
        if (then && !holds) document.JumpTo(*elseLine);
        return LineOutcome::Finished;
    }

    bool IsSettled(const CKalvexDoc& document) const {
        return chain != nullptr && chain->IsSettled(document);
    }
    [[gnu::noinline]] LineOutcome BranchAsSettled(CKalvexDoc& document) {
        if (!chain->HoldsAsSettled(document)) document.JumpTo(*elseLine);
        return LineOutcome::Finished;
    }

    // By any condition, the text being that of the form. Stands apart, since most need none of it.
    [[gnu::noinline]] LineOutcome Decide(CKalvexDoc& document, std::string_view text) {
        if (chain != nullptr && condition.FailsByName(document)) {
            chain->Settle(document, condition.FailedName());
            return FinishedIf(chain->Run(document, *elseLine));
        }
        value::CVal scratch;
        const value::CVal* const value =
            condition.Look(document, scratch, value::ValueType::Double);
        if (value != nullptr) return Branch(document, (*value != value::CVal(0)) != 0);
        if (chain == nullptr) chain = std::make_unique<ComparisonChain>(text);
        return FinishedIf(chain->Run(document, *elseLine));
    }

    operands::Expression condition;
    std::unique_ptr<ComparisonChain> chain;  // of a condition that was no formula
    std::optional<LabelTarget> target;
    bool then;
    std::optional<int> elseLine;  // of a block without fault
};

[[gnu::noinline]] LineOutcome BranchByValue(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<IfForm>();
    if (!form.elseLine && !form.FindBlock(document)) return LineOutcome::Failed;
    if (double real = 0; form.condition.FindReal(document, real)) {
        return form.Branch(document, real != 0);
    }
    return form.Decide(document, line.Rest());
}

struct ElseForm final : StatementForm {
    explicit ElseForm(std::string_view) {}

    // False where that leaves an error, which is to be recorded each time.
    bool FindEnd(CKalvexDoc& document) {
        const ElseEnd found =
            document.IfBlocks().ElseEndAt(document.Lines(), document.State().m_nCurrentLine);
        if (found.error == 0 && found.line < document.GetLineCount()) end = found.line;
        return end.has_value();
    }

    std::optional<int> end;  // the line of its ENDIF
};

struct GotoForm final : StatementForm {
    explicit GotoForm(std::string_view text) : target(text::NextToken(text)) {}

    LabelTarget target;
};

}  // namespace

LineOutcome ExecuteIf(CKalvexDoc& document, LineForm& line) {
    auto* const form = line.Made<IfForm>();
    if (form != nullptr && form->IsSettled(document)) return form->BranchAsSettled(document);
    return BranchByValue(document, line);
}

LineOutcome ExecuteElse(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<ElseForm>();
    if (!form.end && !form.FindEnd(document)) {
        const int end = document.IfBlocks().FindElseEnd(document, document.State().m_nCurrentLine);
        document.JumpTo(end);
        return FinishedIf(end < document.GetLineCount());
    }
    document.JumpTo(*form.end);
    return LineOutcome::Finished;
}

LineOutcome ExecuteEndif(CKalvexDoc&, LineForm&) {
    return LineOutcome::Finished;
}

LineOutcome ExecuteGoto(CKalvexDoc& document, LineForm& line) {
    return FinishedIf(document.GotoLabel(line.Read<GotoForm>().target));
}

bool CKalvexDoc::GotoNewLabel(LabelTarget& label) {
    const std::string token = ':' + std::string(label.label);
    label.line = m_arrLineCache.FindLabel(token);
    if (label.line < 0) return StopOnError(operands::ErrorNoLabel, token);
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
