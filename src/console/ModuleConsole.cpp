#include "console/ModuleConsole.h"

#include "console/VariableMessages.h"
#include "value/Status.h"

namespace kalvex::console {

namespace {

constexpr std::uint16_t kBad = value::Status::Unknown | value::Status::TransmissionError;

bool IsIdle(const engine::RunState& state) {
    return !state.m_bPaused && !state.m_bRunning && !state.m_bStepRequested;
}

}  // namespace

struct ModuleConsole::Message {
    std::string_view path;  // of the script
    const std::string& text;
    MessageFields fields;
    engine::CKalvexDoc* document;  // null when it is not open
};

struct ModuleConsole::MessageRow {
    ControlKind kind;
    MessageCode code;
    void (ModuleConsole::*handle)(const Message& message);
    bool needsDocument;
};

const ModuleConsole::MessageRow ModuleConsole::kMessages[] = {
    {ControlKind::Command, MessageCode::AskSession, &ModuleConsole::AskSession, false},
    {ControlKind::Command, MessageCode::PassSession, &ModuleConsole::PassSession, false},
    {ControlKind::Command, MessageCode::Start, &ModuleConsole::Start, true},
    {ControlKind::Command, MessageCode::Stop, &ModuleConsole::Stop, true},
    {ControlKind::Command, MessageCode::Reset, &ModuleConsole::Reset, true},
    {ControlKind::Command, MessageCode::Step, &ModuleConsole::Step, true},
    {ControlKind::Command, MessageCode::SetBreakpoint, &ModuleConsole::SetBreakpoint, true},
    {ControlKind::Command, MessageCode::RemoveBreakpoint, &ModuleConsole::RemoveBreakpoint, true},
    {ControlKind::Command, MessageCode::RemoveBreakpoints, &ModuleConsole::RemoveBreakpoints, true},
    {ControlKind::Command, MessageCode::SessionHeld, &ModuleConsole::Echo, false},
    {ControlKind::List, MessageCode::SetVariable, &ModuleConsole::SetVariable, true},
    {ControlKind::List, MessageCode::AskVariable, &ModuleConsole::AskVariable, true},
    {ControlKind::List, MessageCode::AskVariables, &ModuleConsole::AskVariables, true},
};

ModuleConsole::ModuleConsole(ConsoleHost& host)
    : m_host(host), m_variables([this](CVarRCCtrl& variable) { OnWritten(variable); }) {}

// ---- what happens at the module

void ModuleConsole::OnOpened(const engine::CKalvexDoc& document, bool isTold) {
    m_variables.CreateForScript(document.GetDocKey());
    if (m_clients != nullptr) m_clients->OnVariables();
    if (isTold) SendDocumentNotice(document.GetDocKey());
}

void ModuleConsole::OnClosing(const engine::CKalvexDoc& document) {
    m_asked.erase(&document);
    SendDocumentNotice(kClosedPrefix + document.GetDocKey());
    m_variables.RemoveOfScript(document.GetDocKey());
    if (m_clients != nullptr) m_clients->OnVariables();
}

void ModuleConsole::PublishLevel(int level) {
    Publish(&m_variables.LogLevel(), value::CVal(level));
}

void ModuleConsole::TakeBackAllSessions() {
    for (engine::CKalvexDoc* document : m_host.Scripts()) {
        if (document->State().m_bControlAllowed) continue;
        document->AllowControl(true);
        if (IsIdle(document->State())) document->SetReadOnly(false);
    }
}

// ---- publishing

void ModuleConsole::Publish(CVarRCCtrl* variable, value::CVal value) {
    if (variable == nullptr) return;
    variable->SetControlValue(std::move(value));
    if (m_clients != nullptr) m_clients->AddCurrentValueChange(*variable);
}

void ModuleConsole::SendText(std::string_view path, std::string text) {
    Publish(m_variables.Find(ControlKind::Command, path), value::CVal(text));
}

void ModuleConsole::SendList(std::string_view path, std::string text) {
    Publish(m_variables.Find(ControlKind::List, path), value::CVal(text));
}

void ModuleConsole::SendDocumentNotice(std::string_view path) {
    Publish(&m_variables.DocumentInfo(), value::CVal(path));
}

void ModuleConsole::SendCommand(std::string_view documentKey, engine::ConsoleCommand command) {
    SendText(documentKey, CodeText(static_cast<MessageCode>(command)));
}

void ModuleConsole::SendLine(std::string_view documentKey, int line) {
    Publish(m_variables.Find(ControlKind::Line, documentKey), value::CVal(line));
}

void ModuleConsole::SendState(std::string_view documentKey, engine::ConsoleStateMessage message,
                              int stateWord, int line) {
    SendText(documentKey, StateText(static_cast<MessageCode>(message), stateWord, line));
}

// ---- what clients write

void ModuleConsole::OnWritten(CVarRCCtrl& variable) {
    if ((variable.Value().GetStatus() & kBad) != 0) return;
    switch (variable.GetKind()) {
        case ControlKind::LogLevel:
            return OnLogLevel(variable);
        case ControlKind::DocumentInfo:
            return OnDocumentInfo(variable);
        case ControlKind::Command:
        case ControlKind::List:
            return OnMessage(variable);
        case ControlKind::Line:
            return OnLine(variable);
    }
}

void ModuleConsole::OnLogLevel(CVarRCCtrl& variable) {
    int level = 0;
    variable.Value().GetValData(value::ValueType::Int, &level);
    m_host.SetLogLevel(level);
}

void ModuleConsole::OnDocumentInfo(CVarRCCtrl& variable) {
    const std::string text(variable.Value().Text());
    if (text.empty()) return;
    const bool closes = text.front() == kClosedPrefix;
    const std::string path = text.substr(closes ? 1 : 0);
    engine::CKalvexDoc* document = m_host.FindScript(path);
    if (closes && document != nullptr) {
        m_asked.erase(document);
        m_host.CloseScript(*document);
    }
    if (!closes && document == nullptr) {
        document = m_host.OpenScript(path);
        if (document != nullptr) {
            document->AllowControl(true);
            OnOpened(*document, false);
        }
    }
    SendDocumentNotice(text);
}

void ModuleConsole::OnMessage(CVarRCCtrl& variable) {
    const std::string path(variable.GetScript());
    const std::string text(variable.Value().Text());
    const Message message{path, text, MessageFields(text), m_host.FindScript(path)};
    const MessageCode code = message.fields.Code();
    for (const MessageRow& row : kMessages) {
        if (row.kind != variable.GetKind() || row.code != code) continue;
        if (message.document != nullptr || !row.needsDocument) (this->*row.handle)(message);
        return;
    }
}

void ModuleConsole::OnLine(CVarRCCtrl& variable) {
    engine::CKalvexDoc* document = m_host.FindScript(variable.GetScript());
    if (document == nullptr) return;
    int number = 0;
    variable.Value().GetValData(value::ValueType::Int, &number);
    if (number == LineReportsWanted) document->SendLineReports(true);
    if (number == LineReportsUnwanted) document->SendLineReports(false);
}

// ---- commands

void ModuleConsole::Start(const Message& message) {
    engine::CKalvexDoc& document = *message.document;
    if (!document.Start()) return;
    SendText(message.path, StateText(MessageCode::Started, document.GetStateWord(),
                                     document.State().m_nCurrentLine));
}

void ModuleConsole::Stop(const Message& message) {
    engine::CKalvexDoc& document = *message.document;
    document.Stop();
    SendText(message.path, StateText(MessageCode::Stopped, document.GetStateWord(),
                                     document.State().m_nCurrentLine));
}

void ModuleConsole::Reset(const Message& message) {
    message.document->Reset();
    SendText(message.path, CodeText(MessageCode::WasReset));
}

void ModuleConsole::Step(const Message& message) {
    engine::CKalvexDoc& document = *message.document;
    document.Step();
    SendText(message.path, StateText(MessageCode::Stepped, document.GetStateWord(),
                                     document.State().m_nCurrentLine));
}

void ModuleConsole::SetBreakpoint(const Message& message) {
    const int line = message.fields.Number(1);
    if (line < 0) return;
    m_host.MarkersOf(*message.document).SetBreakpoint(line, true);
    SendText(message.path, LineText(MessageCode::BreakpointSet, line));
}

void ModuleConsole::RemoveBreakpoint(const Message& message) {
    const int line = message.fields.Number(1);
    m_host.MarkersOf(*message.document).SetBreakpoint(line, false);
    SendText(message.path, LineText(MessageCode::BreakpointRemoved, line));
}

void ModuleConsole::RemoveBreakpoints(const Message& message) {
    m_host.MarkersOf(*message.document)
        .DeleteAllMarkers(workbench::MarkerBreakpoint | workbench::MarkerBreakpointColour);
    SendText(message.path, CodeText(MessageCode::BreakpointsRemoved));
}

void ModuleConsole::Echo(const Message& message) {
    SendText(message.path, message.text);
}

// ---- the variables of a script

void ModuleConsole::SetVariable(const Message& message) {
    const MessageFields& fields = message.fields;
    operands::CVariable* variable = message.document->Variables().Find(fields.Text(1));
    if (variable == nullptr) return;
    variable->SetValue(ReadMessageValue(fields.Text(2), fields.Number(3), fields.Number(4)),
                       value::KindCurrent);
}

void ModuleConsole::AskVariable(const Message& message) {
    operands::CVariable* variable = message.document->Variables().Find(message.fields.Text(1));
    if (variable != nullptr) SendList(message.path, VariableValuesText(*variable));
}

void ModuleConsole::AskVariables(const Message& message) {
    for (const auto& variable : message.document->Variables()) {
        SendList(message.path, VariableValuesText(*variable));
    }
}

// ---- sessions

void ModuleConsole::AskSession(const Message& message) {
    const std::string_view asking = message.fields.Text(1);
    if (!asking.empty() && asking != m_host.GetClientIdentity()) {
        HandOverSession(message.path, asking);
    }
    Echo(message);
}

void ModuleConsole::PassSession(const Message& message) {
    const std::string_view holder = message.fields.Text(1);
    if (!holder.empty() && holder != m_host.GetClientIdentity()) {
        TakeSession(message.document, message.fields.Text(2));
    }
    Echo(message);
}

void ModuleConsole::HandOverSession(std::string_view path, std::string_view asking) {
    engine::CKalvexDoc* document = m_host.FindScript(path);
    if (document == nullptr) document = m_host.OpenScript(path);
    if (document == nullptr || !document->State().m_bControlAllowed) return;
    if (!document->IsReadOnly() && document->IsModified()) document->ExpandIncludes(false);
    const std::vector<int> breakpoints =
        m_host.MarkersOf(*document).LinesOf(workbench::MarkerBreakpoint);
    if (!document->IsReadOnly()) document->SetReadOnly(true);
    document->AllowControl(false);
    SendText(path, PassSessionText(m_host.GetClientIdentity(), asking, document->GetStateWord(),
                                   document->State().m_nCurrentLine, breakpoints));
    m_asked.insert(document);
}

void ModuleConsole::TakeSession(engine::CKalvexDoc* document, std::string_view newHolder) {
    if (document == nullptr || newHolder != m_host.GetClientIdentity()) return;
    if (m_asked.erase(document) == 0) return;
    document->AllowControl(true);
    document->SetReadOnly(!IsIdle(document->State()));
    document->SendLineReports(false);
}

}  // namespace kalvex::console
