#include "console/ModuleConsole.h"

#include <optional>
#include <utility>

#include "console/VariableMessages.h"
#include "text/TextFormat.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::console {

namespace {

using audit::AuditAction;

constexpr std::uint16_t kBad = value::Status::Unknown | value::Status::TransmissionError;

// Lines as people count them.
std::string LineName(int line) {
    return std::to_string(line + 1);
}

std::string StateOf(const engine::CKalvexDoc* document) {
    return std::string(engine::StateName(document->GetStateWord()));
}

// With the status where it says something.
std::string ValueName(const value::CVal& value) {
    std::string text = value::ValueToText(value);
    if (value.GetStatus() != 0)
        text += text::FormatText(" ( %d )", {std::to_string(value.GetStatus())});
    return text;
}

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
    // Of a command, which is recorded with the state of its script before and after.
    std::optional<AuditAction> command = {};
};

const ModuleConsole::MessageRow ModuleConsole::kMessages[] = {
    {ControlKind::Command, MessageCode::AskSession, &ModuleConsole::AskSession, false},
    {ControlKind::Command, MessageCode::PassSession, &ModuleConsole::PassSession, false},
    {ControlKind::Command, MessageCode::Start, &ModuleConsole::Start, true, AuditAction::Start},
    {ControlKind::Command, MessageCode::Stop, &ModuleConsole::Stop, true, AuditAction::Stop},
    {ControlKind::Command, MessageCode::Reset, &ModuleConsole::Reset, true, AuditAction::Reset},
    {ControlKind::Command, MessageCode::Step, &ModuleConsole::Step, true, AuditAction::Step},
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
    if (m_clients != nullptr) m_clients->OnVariables(document.GetDocKey());
    if (isTold) SendDocumentNotice(document.GetDocKey());
}

void ModuleConsole::OnClosing(const engine::CKalvexDoc& document) {
    m_asked.erase(&document);
    SendDocumentNotice(kClosedPrefix + document.GetDocKey());
    m_variables.RemoveOfScript(document.GetDocKey());
    if (m_clients != nullptr) m_clients->OnVariables(document.GetDocKey());
}

void ModuleConsole::PublishLevel(int level) {
    m_level = level;
    Publish(&m_variables.LogLevel(), value::CVal(level));
}

void ModuleConsole::TakeBackAllSessions(const ConsoleWriter& client) {
    std::string scripts;
    for (engine::CKalvexDoc* document : m_host.Scripts()) {
        if (document->State().m_bControlAllowed) continue;
        document->AllowControl(true);
        if (IsIdle(document->State())) document->SetReadOnly(false);
        if (!scripts.empty()) scripts += ", ";
        scripts += document->GetDocKey();
    }
    if (scripts.empty()) return;
    m_writer = &client;
    Record({.action = AuditAction::SessionsTakenBack, .newValue = scripts});
    m_writer = nullptr;
}

void ModuleConsole::Write(CVarRCCtrl& variable, value::CVal value, const ConsoleWriter& writer) {
    m_writer = &writer;
    variable.SetValue(std::move(value));
    m_writer = nullptr;
}

void ModuleConsole::Record(audit::AuditRecord record) {
    if (m_trail == nullptr || m_writer == nullptr) return;
    record.user = m_writer->user;
    record.address = m_writer->address;
    record.client = m_writer->client;
    m_trail->Add(record);
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
    const int before = m_level;
    m_host.SetLogLevel(level);
    if (m_level == before) return;
    Record({.action = AuditAction::Level,
            .oldValue = std::to_string(before),
            .newValue = std::to_string(m_level)});
}

void ModuleConsole::OnDocumentInfo(CVarRCCtrl& variable) {
    const std::string text(MessageText(variable.Value()));
    if (text.empty()) return;
    const bool closes = text.front() == kClosedPrefix;
    const std::string path = text.substr(closes ? 1 : 0);
    engine::CKalvexDoc* document = m_host.FindScript(path);
    if (closes && document != nullptr) CloseForClient(*document);
    if (!closes && document == nullptr) OpenForClient(path);
    SendDocumentNotice(text);
}

void ModuleConsole::OpenForClient(const std::string& path) {
    engine::CKalvexDoc* document = m_host.OpenScript(path);
    if (document == nullptr) return;
    document->AllowControl(true);
    OnOpened(*document, false);
    Record({.action = AuditAction::Open, .script = document->GetDocKey()});
}

void ModuleConsole::CloseForClient(engine::CKalvexDoc& document) {
    const std::string path = document.GetDocKey();
    const std::string state = StateOf(&document);
    m_asked.erase(&document);
    m_host.CloseScript(document);
    Record({.action = AuditAction::Close, .script = path, .oldValue = state});
}

void ModuleConsole::OnMessage(CVarRCCtrl& variable) {
    const std::string path(variable.GetScript());
    const std::string text(MessageText(variable.Value()));
    const Message message{path, text, MessageFields(text), m_host.FindScript(path)};
    const MessageCode code = message.fields.Code();
    for (const MessageRow& row : kMessages) {
        if (row.kind != variable.GetKind() || row.code != code) continue;
        if (message.document == nullptr && row.needsDocument) return;
        const std::string before = row.command ? StateOf(message.document) : "";
        (this->*row.handle)(message);
        if (!row.command) return;
        return Record({.action = *row.command,
                       .script = path,
                       .oldValue = before,
                       .newValue = StateOf(message.document)});
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
    m_host.ModelOf(*message.document).Markers().SetBreakpoint(line, true);
    SendText(message.path, LineText(MessageCode::BreakpointSet, line));
    Record({.action = AuditAction::BreakpointSet,
            .script = std::string(message.path),
            .name = LineName(line)});
}

void ModuleConsole::RemoveBreakpoint(const Message& message) {
    const int line = message.fields.Number(1);
    m_host.ModelOf(*message.document).Markers().SetBreakpoint(line, false);
    SendText(message.path, LineText(MessageCode::BreakpointRemoved, line));
    Record({.action = AuditAction::BreakpointRemoved,
            .script = std::string(message.path),
            .name = LineName(line)});
}

void ModuleConsole::RemoveBreakpoints(const Message& message) {
    workbench::ScriptMarkers& markers = m_host.ModelOf(*message.document).Markers();
    std::string lines;
    for (const int line : markers.LinesOf(workbench::MarkerBreakpoint)) {
        if (!lines.empty()) lines += ' ';
        lines += LineName(line);
    }
    markers.DeleteAllMarkers(workbench::MarkerBreakpoint | workbench::MarkerBreakpointColour);
    SendText(message.path, CodeText(MessageCode::BreakpointsRemoved));
    Record({.action = AuditAction::BreakpointsRemoved,
            .script = std::string(message.path),
            .oldValue = lines});
}

void ModuleConsole::Echo(const Message& message) {
    SendText(message.path, message.text);
}

// ---- the variables of a script

void ModuleConsole::SetVariable(const Message& message) {
    const MessageFields& fields = message.fields;
    operands::CVariable* variable = message.document->Variables().Find(fields.Text(1));
    if (variable == nullptr) return;
    audit::AuditRecord record{.action = AuditAction::Value,
                              .script = std::string(message.path),
                              .name = variable->GetName()};
    value::CVal value;
    if (variable->GetValue(value, value::KindCurrent, operands::kAsStored) == operands::ReadValue) {
        record.oldValue = ValueName(value);
    }
    value = ReadMessageValue(fields.Text(2), fields.Number(3), fields.Number(4));
    record.newValue = ValueName(value);
    variable->SetValue(std::move(value), value::KindCurrent);
    message.document->OnValueSet();
    Record(std::move(record));
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
    const bool force = message.fields.Number(2) == 1;
    if (!asking.empty() && asking != m_host.GetClientIdentity()) {
        const bool given = HandOverSession(message.path, asking);
        if (given || force) {
            audit::AuditRecord record{.action = AuditAction::SessionForced,
                                      .script = std::string(message.path),
                                      .newValue = std::string(asking)};
            if (given) {
                record.action = AuditAction::SessionTaken;
                record.oldValue = m_host.GetClientIdentity();
            }
            Record(std::move(record));
        }
    }
    Echo(message);
}

void ModuleConsole::PassSession(const Message& message) {
    const std::string_view holder = message.fields.Text(1);
    if (!holder.empty() && holder != m_host.GetClientIdentity()) {
        TakeSession(message.document, message.fields.Text(2));
        Record({.action = AuditAction::SessionGiven,
                .script = std::string(message.path),
                .oldValue = std::string(holder),
                .newValue = std::string(message.fields.Text(2))});
    }
    Echo(message);
}

bool ModuleConsole::HandOverSession(std::string_view path, std::string_view asking) {
    engine::CKalvexDoc* document = m_host.FindScript(path);
    if (document == nullptr) document = m_host.OpenScript(path);
    if (document == nullptr || !document->State().m_bControlAllowed) return false;
    if (!document->IsReadOnly() && document->IsModified()) document->ExpandIncludes(false);
    const std::vector<int> breakpoints =
        m_host.ModelOf(*document).Markers().LinesOf(workbench::MarkerBreakpoint);
    if (!document->IsReadOnly()) document->SetReadOnly(true);
    document->AllowControl(false);
    SendText(path, PassSessionText(m_host.GetClientIdentity(), asking, document->GetStateWord(),
                                   document->State().m_nCurrentLine, breakpoints));
    m_asked.insert(document);
    return true;
}

void ModuleConsole::TakeSession(engine::CKalvexDoc* document, std::string_view newHolder) {
    if (document == nullptr || newHolder != m_host.GetClientIdentity()) return;
    if (m_asked.erase(document) == 0) return;
    document->AllowControl(true);
    document->SetReadOnly(!IsIdle(document->State()));
    document->SendLineReports(false);
}

}  // namespace kalvex::console
