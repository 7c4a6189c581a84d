// The life of a console: its connection, the scripts that it mirrors, what is sent.
#include "console/ClientConsole.h"

#include <utility>

#include "text/TextFormat.h"
#include "value/Status.h"

namespace kalvex::console {

namespace {

constexpr std::uint16_t kBad = value::Status::Unknown | value::Status::TransmissionError;

constexpr const char* kNoConnection = platform::Translatable("Brak połączenia");
constexpr const char* kIsOpen = platform::Translatable("Plik skryptu %s jest już otwarty");

bool IsTold(const value::CVal& value) {
    return (value.GetStatus() & kBad) == 0 && value.GetType() != value::ValueType::None;
}

int NumberOf(const value::CVal& value) {
    int number = 0;
    value.GetValData(value::ValueType::Int, &number);
    return number;
}

}  // namespace

void ClientConsole::Open() {
    sources::CClientInterface& sources = m_services.sources;
    sources.Services().console = this;
    sources.BlockSubscribe();
    sources.RegisterPlain(m_services.module, kLogLevelVariable);
    sources.RegisterPlain(m_services.module, kDocumentInfoVariable);
    sources.UnblockSubscribe(false);
}

// ---- the connection

void ClientConsole::OnConnected(std::string_view source) {
    if (source != m_services.module) return;
    for (const engine::CKalvexDoc* document : m_services.host.Scripts()) {
        Write(kDocumentInfoVariable, value::CVal(document->GetDocKey()));
    }
    m_services.host.UpdateTitle();
    m_services.host.ClearLog();
}

void ClientConsole::OnConnectionLost(std::string_view source) {
    if (source != m_services.module) return;
    m_services.sources.BlockSubscribe();
    for (engine::CKalvexDoc* document : m_services.host.Scripts()) {
        if (document->State().m_bControlAllowed) Lose(*document);
        UnregisterVariables(document->GetDocKey());
    }
    m_services.sources.UnblockSubscribe(false);
    m_services.host.UpdateTitle();
    m_services.host.ClearLog();
    m_services.log.Log(m_services.translator.Translate(kNoConnection), platform::LogAlways);
}

void ClientConsole::OnModuleLog(int level, std::int64_t time, std::string_view text) {
    m_services.host.LogFromModule(text, time, level);
}

// ---- what the module tells

// What was said of scripts before this console came is the past. A level is what it is.
void ClientConsole::OnHeldValue(std::string_view variable, const value::CVal& value) {
    if (variable == kLogLevelVariable) OnControlValue(variable, value);
}

void ClientConsole::OnControlValue(std::string_view variable, const value::CVal& value) {
    if (!IsTold(value)) return;
    if (variable == kLogLevelVariable) return m_services.host.TakeLogLevel(NumberOf(value));
    if (variable == kDocumentInfoVariable) return OnDocumentInfo(MessageText(value));
    const auto found = m_variables.find(variable);
    if (found == m_variables.end()) return;
    if (found->second.kind == ControlKind::Line) return OnLine(found->second, value);
    OnMessage(found->second, MessageText(value));
}

void ClientConsole::OnDocumentInfo(std::string_view notice) {
    if (notice.empty()) return;
    const bool closes = notice.front() == kClosedPrefix;
    const std::string path(notice.substr(closes ? 1 : 0));
    engine::CKalvexDoc* document = m_services.host.FindScript(path);
    if (closes && document != nullptr) CloseFor(*document);
    if (!closes && document == nullptr) Mirror(path);
}

void ClientConsole::CloseFor(engine::CKalvexDoc& document) {
    m_asked.erase(document.GetDocKey());
    UnregisterVariables(document.GetDocKey());
    m_services.host.CloseScript(document);
}

void ClientConsole::Mirror(std::string_view path) {
    engine::CKalvexDoc* document = m_services.host.OpenScript(path);
    if (document == nullptr) return;
    document->SetReadOnly(true);
    document->AllowControl(false);
    document->SetMinimised(true);
    m_services.host.MinimiseFrame(*document);
    m_services.host.ModelOf(*document).Variables().Rebuild(document->Text());
    RegisterVariables(document->GetDocKey());
}

void ClientConsole::OnLine(const Variable& variable, const value::CVal& value) {
    const int line = NumberOf(value);
    engine::CKalvexDoc* document = m_services.host.FindScript(variable.path);
    if (line >= 0 && document != nullptr) document->MirrorLine(line);
}

// ---- scripts

engine::CKalvexDoc* ClientConsole::OpenByHand(std::string_view path) {
    if (m_services.host.FindScript(path) != nullptr) {
        m_services.host.ShowMessage(
            text::FormatText(m_services.translator.Translate(kIsOpen), {path}));
        return nullptr;
    }
    engine::CKalvexDoc* document = m_services.host.OpenScript(path);
    if (document == nullptr) return nullptr;
    Write(kDocumentInfoVariable, value::CVal(document->GetDocKey()));
    document->AllowControl(false);
    document->SetReadOnly(true);
    m_services.host.ModelOf(*document).Variables().Rebuild(document->Text());
    return document;
}

void ClientConsole::OnClosing(const engine::CKalvexDoc& document) {
    m_asked.erase(document.GetDocKey());
    Write(kDocumentInfoVariable, value::CVal(kClosedPrefix + document.GetDocKey()));
    UnregisterVariables(document.GetDocKey());
}

void ClientConsole::OnSaved(engine::CKalvexDoc& document) {
    if (!document.State().m_bControlAllowed) document.SetReadOnly(true);
    Write(kDocumentInfoVariable, value::CVal(document.GetDocKey()));
}

void ClientConsole::OnMinimised(engine::CKalvexDoc& document, bool minimised) {
    if (document.State().m_bMinimised == minimised) return;
    document.SetMinimised(minimised);
    if (m_variables.count(document.GetDocKey()) == 0) return;
    WriteOf(ControlKind::Line, document.GetDocKey(),
            value::CVal(minimised ? LineReportsUnwanted : LineReportsWanted));
}

// ---- variables of the module

void ClientConsole::RegisterVariables(const std::string& path) {
    m_services.sources.BlockSubscribe();
    for (const auto& [kind, prefix] : kScriptVariables) {
        const std::string name = std::string(prefix) + path;
        if (!m_variables.emplace(name, Variable{kind, path}).second) continue;
        m_services.sources.RegisterPlain(m_services.module, name);
    }
    m_services.sources.UnblockSubscribe(false);
}

void ClientConsole::UnregisterVariables(const std::string& path) {
    m_services.sources.BlockSubscribe();
    for (const ScriptVariable& row : kScriptVariables) {
        const std::string name = std::string(row.prefix) + path;
        if (m_variables.erase(name) == 0) continue;
        m_services.sources.UnregisterPlain(m_services.module, name);
    }
    m_services.sources.UnblockSubscribe(false);
}

void ClientConsole::Write(std::string_view variable, const value::CVal& value) {
    m_services.sources.ModifyCurrentByName(m_services.module, variable, value);
}

void ClientConsole::WriteOf(ControlKind kind, const std::string& path, const value::CVal& value) {
    Write(std::string(PrefixOf(kind)) + path, value);
}

void ClientConsole::SendText(const std::string& path, const std::string& text) {
    Write(path, value::CVal(text));
}

void ClientConsole::Later(std::function<void()> work) {
    m_services.loop.Post([alive = std::weak_ptr(m_alive), work = std::move(work)] {
        if (!alive.expired()) work();
    });
}

bool ClientConsole::Ask(const char* question, std::initializer_list<std::string_view> arguments) {
    return m_services.questions.AskYesNo(
        text::FormatText(m_services.translator.Translate(question), arguments));
}

}  // namespace kalvex::console
