#include "engine/Procedures.h"

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

LineOutcome CallProcedure(CKalvexDoc& document, CCallFrame& frame, std::string_view text) {
    const std::string name(ProcedureName(text));  // the search moves on from this line's text
    if (name.empty()) return document.StopOnError(operands::ErrorNoProcedure, "");
    ForEachArgument(text, [&](std::string item) {
        frame.arrArgs.push_back({.strActual = std::move(item), .strFormal = {}});
    });
    const int head = document.Lines().FindProcedure(name);
    if (head < 0) return document.StopOnError(operands::ErrorNoProcedure, "");

    std::string_view line = document.GetLine(head);
    text::NextToken(line);
    auto next = frame.arrArgs.begin();
    ForEachArgument(line, [&](std::string item) {
        if (next != frame.arrArgs.end()) (next++)->strFormal = std::move(item);
    });
    document.JumpTo(head);
    return LineOutcome::Finished;
}

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

CCallFrame& CKalvexDoc::PushFrame() {
    CCallFrame& frame = m_lstCallStack.emplace_back();
    frame.nReturnLine = m_nCurrentLine;
    return frame;
}

bool CKalvexDoc::ReturnFromCall() {
    if (m_lstCallStack.empty()) return false;
    JumpTo(m_lstCallStack.back().nReturnLine);
    m_lstCallStack.pop_back();
    return true;
}

LineOutcome ExecuteProcedure(StatementCall& call) {
    call.document.SkipProcedure();
    return LineOutcome::Finished;
}

LineOutcome ExecuteBegin(StatementCall&) {
    return LineOutcome::Finished;
}

LineOutcome ExecuteEnd(StatementCall& call) {
    return FinishedIf(call.document.ReturnFromCall());
}

LineOutcome ExecuteCall(StatementCall& call) {
    return CallProcedure(call.document, call.document.PushFrame(), call.rest);
}

}  // namespace kalvex::engine
