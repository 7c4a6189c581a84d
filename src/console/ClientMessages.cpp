// What a console does with the messages of its module, row by row. Sessions: ClientSessions.cpp.
#include <algorithm>

#include "console/ClientConsole.h"

namespace kalvex::console {

struct ClientConsole::MessageRow {
    ControlKind kind;
    MessageCode code;
    void (ClientConsole::*handle)(const Message& message);
};

const ClientConsole::MessageRow ClientConsole::kMessages[] = {
    {ControlKind::Command, MessageCode::AskSession, &ClientConsole::AskSession},
    {ControlKind::Command, MessageCode::PassSession, &ClientConsole::PassSession},
    {ControlKind::Command, MessageCode::Started, &ClientConsole::Started},
    {ControlKind::Command, MessageCode::Stopped, &ClientConsole::Stopped},
    {ControlKind::Command, MessageCode::WasReset, &ClientConsole::WasReset},
    {ControlKind::Command, MessageCode::Stepped, &ClientConsole::Stopped},
    {ControlKind::Command, MessageCode::BreakpointSet, &ClientConsole::BreakpointSet},
    {ControlKind::Command, MessageCode::BreakpointRemoved, &ClientConsole::BreakpointRemoved},
    {ControlKind::Command, MessageCode::BreakpointsRemoved, &ClientConsole::BreakpointsRemoved},
    {ControlKind::Command, MessageCode::BreakpointReached, &ClientConsole::Stopped},
    {ControlKind::Command, MessageCode::SessionHeld, &ClientConsole::SessionHeld},
    {ControlKind::List, MessageCode::VariableValues, &ClientConsole::VariableValues},
};

void ClientConsole::OnMessage(const Variable& variable, std::string_view text) {
    engine::CKalvexDoc* document = m_services.host.FindScript(variable.path);
    if (document == nullptr) return;
    const Message message{MessageFields(text), *document};
    const MessageCode code = message.fields.Code();
    for (const MessageRow& row : kMessages) {
        if (row.kind == variable.kind && row.code == code) return (this->*row.handle)(message);
    }
}

// ---- runs

void ClientConsole::Started(const Message& message) {
    engine::CKalvexDoc& document = message.document;
    document.MirrorState(message.fields.Number(1));
    document.SetReadOnly(true);
    document.PrepareRun();
    document.JumpTo(std::max(message.fields.Number(2), 0));
    workbench::DocumentModel& model = m_services.host.ModelOf(document);
    model.Markers().DeleteAllMarkers(workbench::MarkerCurrentLine);
    model.Variables().Rebuild(document.Text());
    m_services.host.ShowVariables(document, -1);
}

// At a command, after a step, or at a breakpoint.
void ClientConsole::Stopped(const Message& message) {
    message.document.MirrorState(message.fields.Number(1));
    message.document.MirrorLine(message.fields.NumberOr(2, -1));
}

// The message has no state, so the script is shown as idle.
void ClientConsole::WasReset(const Message& message) {
    engine::CKalvexDoc& document = message.document;
    document.EndRun();
    workbench::DocumentModel& model = m_services.host.ModelOf(document);
    model.Markers().DeleteAllMarkers(workbench::MarkerCurrentLine);
    model.Variables().Clear();
    m_services.host.ShowVariables(document, -1);
}

// ---- breakpoints

void ClientConsole::BreakpointSet(const Message& message) {
    const int line = message.fields.NumberOr(1, -1);
    if (line < 0) return;
    m_services.host.ModelOf(message.document).Markers().SetBreakpoint(line, true);
}

void ClientConsole::BreakpointRemoved(const Message& message) {
    m_services.host.ModelOf(message.document)
        .Markers()
        .SetBreakpoint(message.fields.NumberOr(1, -1), false);
}

void ClientConsole::BreakpointsRemoved(const Message& message) {
    m_services.host.ModelOf(message.document)
        .Markers()
        .DeleteAllMarkers(workbench::MarkerBreakpoint | workbench::MarkerBreakpointColour);
}

// ---- variables

void ClientConsole::VariableValues(const Message& message) {
    const int row = m_services.host.ModelOf(message.document)
                        .Variables()
                        .Update(message.fields.Text(1), message.fields.Text(2));
    if (row >= 0) m_services.host.ShowVariables(message.document, row);
}

}  // namespace kalvex::console
