// What the person at a console orders of the module.
#include <algorithm>
#include <functional>

#include "console/ClientConsole.h"
#include "console/VariableMessages.h"

namespace kalvex::console {

void ClientConsole::SendCommand(std::string_view documentKey, engine::ConsoleCommand command) {
    SendText(std::string(documentKey), CodeText(static_cast<MessageCode>(command)));
}

void ClientConsole::SendLogLevel(int level) {
    if (IsConnected()) Write(kLogLevelVariable, value::CVal(level));
}

// ---- breakpoints: the module's reply sets them here

void ClientConsole::SendBreakpoint(const engine::CKalvexDoc& document, MessageCode code, int line) {
    SendText(document.GetDocKey(), LineText(code, line));
}

void ClientConsole::ToggleBreakpoint(const engine::CKalvexDoc& document, int line) {
    if (!document.State().m_bControlAllowed) return;
    const bool isSet = m_services.host.ModelOf(document).HasBreakpoint(line);
    SendBreakpoint(document, isSet ? MessageCode::RemoveBreakpoint : MessageCode::SetBreakpoint,
                   line);
}

void ClientConsole::RemoveBreakpoints(const engine::CKalvexDoc& document) {
    if (!document.State().m_bControlAllowed) return;
    SendText(document.GetDocKey(), CodeText(MessageCode::RemoveBreakpoints));
}

// From the last one back, so that none is set on the place of one that is yet to go.
void ClientConsole::OnLinesInserted(const engine::CKalvexDoc& document, int line, int count) {
    if (!document.State().m_bControlAllowed) return;
    std::vector<int> lines =
        m_services.host.ModelOf(document).Markers().LinesOf(workbench::MarkerBreakpoint);
    std::ranges::sort(lines, std::ranges::greater());
    for (const int old : lines) {
        if (old < line) continue;
        SendBreakpoint(document, MessageCode::RemoveBreakpoint, old);
        SendBreakpoint(document, MessageCode::SetBreakpoint, old + count);
    }
}

void ClientConsole::OnLinesDeleted(const engine::CKalvexDoc& document, int line, int count) {
    if (!document.State().m_bControlAllowed) return;
    workbench::ScriptMarkers& markers = m_services.host.ModelOf(document).Markers();
    std::vector<int> lines = markers.LinesOf(workbench::MarkerBreakpoint);
    std::ranges::sort(lines);
    for (const int old : lines) {
        if (old < line) continue;
        SendBreakpoint(document, MessageCode::RemoveBreakpoint, old);
        if (old < line + count) {
            markers.SetBreakpoint(old, false);
        } else {
            SendBreakpoint(document, MessageCode::SetBreakpoint, old - count);
        }
    }
}

// ---- variables

bool ClientConsole::SetVariable(const engine::CKalvexDoc& document, std::string_view name,
                                const value::CVal& value) {
    const std::string text = SetVariableText(name, value);
    if (text.empty()) return false;
    WriteOf(ControlKind::List, document.GetDocKey(), value::CVal(text));
    return true;
}

void ClientConsole::AskForVariable(const engine::CKalvexDoc& document, std::string_view name) {
    if (name.empty()) return;
    WriteOf(ControlKind::List, document.GetDocKey(), value::CVal(AskVariableText(name)));
}

void ClientConsole::AskForVariables(const engine::CKalvexDoc& document) {
    WriteOf(ControlKind::List, document.GetDocKey(),
            value::CVal(CodeText(MessageCode::AskVariables)));
}

}  // namespace kalvex::console
