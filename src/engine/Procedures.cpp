#include "engine/Procedures.h"

#include <iterator>
#include <utility>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/Keywords.h"
#include "operands/Variable.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

// Walks through an argument list from behind its first "(" and hands over each item that a "," or
// ")" ends. Blanks are dropped; a "," or ")" that meets an empty item begins it.
template <class Take>
void ForEachArgument(std::string_view text, Take take) {
    const std::size_t open = text.find('(');
    if (open == std::string_view::npos) return;
    std::string item;
    for (const char c : text.substr(open + 1)) {
        if (c == ' ') continue;
        if (item.empty() || (c != ',' && c != ')')) {
            item += c;
        } else {
            take(std::exchange(item, {}));
        }
    }
}

// What a CALL hands over to the procedure that begins at a line: -1 where there is none of the
// name.
struct CallForm final : StatementForm {
    static constexpr int kUnsought = -2;

    explicit CallForm(std::string_view text) : name(ProcedureName(text)) {
        if (name.empty()) return;
        ForEachArgument(text, [this](std::string item) {
            arguments.push_back({.strActual = std::move(item), .strFormal = {}});
        });
    }

    // The parameters of the head get the arguments in their order.
    void FindHead(CKalvexDoc& document) {
        head = name.empty() ? -1 : document.Lines().FindProcedure(name);
        if (head < 0) return;
        std::string_view line = document.GetLine(head);
        text::NextToken(line);
        auto next = arguments.begin();
        ForEachArgument(line, [&](std::string item) {
            if (next != arguments.end()) (next++)->strFormal = std::move(item);
        });
    }

    std::string_view name;
    std::vector<CCallArg> arguments;
    int head = kUnsought;
    RewrittenLines* lines = nullptr;  // go together with the form
};

// The arguments of a nested call are rewritten where they stand, so that they arrive as those of
// the outer call and a frame never has to look into another.
std::string RewriteArguments(const CCallFrame& frame, std::string_view text) {
    const std::size_t open = text.find('(');
    if (open == std::string_view::npos) return std::string(text);
    std::string result(text.substr(0, open + 1));
    ForEachArgument(text, [&](const std::string& item) {
        const std::string replacement = LookupArgument(frame, item);
        result += replacement.empty() ? item : replacement;
        result += ',';
    });
    if (result.back() == ',') result.pop_back();
    result += ')';
    return result;
}

}  // namespace

std::string_view ProcedureName(std::string_view text) {
    const std::size_t start = text.find_first_not_of(' ');
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    const std::size_t end = text.find_first_of("( ");
    return end == std::string_view::npos ? std::string_view{} : text.substr(0, end);
}

std::string LookupArgument(const CCallFrame& frame, std::string_view token) {
    const std::string_view name = operands::BaseName(token);
    for (const CCallArg& argument : frame.arrArgs) {
        if (argument.strFormal != name) continue;
        return argument.strActual + std::string(token.substr(name.size()));
    }
    return {};
}

std::string RewriteLine(const CCallFrame& frame, std::string_view line) {
    const std::string_view first = text::NextToken(line);
    std::string result(first);
    if (first == operands::Keyword::Call) return result + RewriteArguments(frame, line);
    for (;;) {
        const std::string_view token = text::NextToken(line);
        if (token.empty()) return result;
        const std::string replacement = LookupArgument(frame, token);
        result += ' ';
        result += replacement.empty() ? token : std::string_view(replacement);
    }
}

// Nothing but BEGIN may stand between a head that was reached from above and the body.
LineOutcome CKalvexDoc::PassProcedureLine(std::string_view keyword) {
    if (keyword == operands::Keyword::Begin) {
        m_bInProcedureBody = true;
        return LineOutcome::Finished;
    }
    if (!m_bInProcedureBody) return LineOutcome::Failed;
    if (keyword == operands::Keyword::End) {
        m_bInProcedureSkip = false;
        m_bInProcedureBody = false;
    }
    return LineOutcome::Finished;
}

RewrittenLines* CKalvexDoc::FindLinesOf(const std::vector<CCallArg>& arguments) {
    return Services().keepForms ? m_rewrittenCalls.Find(arguments) : nullptr;
}

// Frames that have ended serve again, with the room that their texts have.
CCallFrame& CKalvexDoc::PushFrame(const std::vector<CCallArg>& arguments) {
    if (m_endedFrames.empty()) m_endedFrames.emplace_back();
    CCallFrame& frame = m_endedFrames.front();
    frame.nReturnLine = m_nCurrentLine;
    frame.arrArgs = arguments;
    m_lstCallStack.splice(m_lstCallStack.end(), m_endedFrames, m_endedFrames.begin());
    return frame;
}

bool CKalvexDoc::ReturnFromCall() {
    constexpr std::size_t kMostEndedFrames = 16;
    if (m_lstCallStack.empty()) return false;
    JumpTo(m_lstCallStack.back().nReturnLine);
    m_endedFrames.splice(m_endedFrames.begin(), m_lstCallStack, std::prev(m_lstCallStack.end()));
    if (m_endedFrames.size() > kMostEndedFrames) m_endedFrames.pop_back();
    return true;
}

LineOutcome ExecuteProcedure(CKalvexDoc& document, LineForm&) {
    document.SkipProcedure();
    return LineOutcome::Finished;
}

LineOutcome ExecuteBegin(CKalvexDoc&, LineForm&) {
    return LineOutcome::Finished;
}

LineOutcome ExecuteEnd(CKalvexDoc& document, LineForm&) {
    return FinishedIf(document.ReturnFromCall());
}

LineOutcome ExecuteCall(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<CallForm>();
    if (form.head == CallForm::kUnsought) form.FindHead(document);
    if (form.lines == nullptr) form.lines = document.FindLinesOf(form.arguments);
    document.PushFrame(form.arguments).lines = form.lines;
    if (form.head < 0) return document.StopOnError(operands::ErrorNoProcedure, "");
    document.JumpTo(form.head);
    return LineOutcome::Finished;
}

}  // namespace kalvex::engine
