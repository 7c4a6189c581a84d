// Who controls a script, as a console sees it: asking, handing over, taking, losing.
#include "console/ClientConsole.h"

namespace kalvex::console {

namespace {

constexpr std::string_view kConsoleSuffix = "_RC";  // of the identity of each console
constexpr int kAskWord = 1;                         // in the place of an identity

constexpr unsigned kBreakpoints = workbench::MarkerBreakpoint | workbench::MarkerBreakpointColour;
constexpr int kOfARun = engine::StateRunning | engine::StatePaused | engine::StateStep;

constexpr const char* kSaveToAsk = platform::Translatable(
    "Aby przejąć aktywną sesję dokumentu, musi on zostać zapisany. Czy zapisać zmiany i wykonać "
    "polecenie?");
constexpr const char* kForce = platform::Translatable(
    "Sesja dla skryptu %s jest przejęta przez klienta %s, czy wymusić przejęcie sesji?");
constexpr const char* kSaveToGive = platform::Translatable(
    "Klient %s wydał polecenie odebrania aktywnej sesji dla skryptu %s. Czy zapisać zmiany?");

}  // namespace

// ---- asking

// The document may be closed while the person is asked.
void ClientConsole::AskForSession(engine::CKalvexDoc& document) {
    if (document.State().m_bControlAllowed) return;
    const std::string path(std::string_view(document.GetDocKey()));
    if (document.IsModified()) {
        if (!Ask(kSaveToAsk, {})) return;
        engine::CKalvexDoc* open = m_services.host.FindScript(path);
        if (open == nullptr || !open->SaveOrLog()) return;
    }
    RegisterVariables(path);
    SendText(path, AskSessionText(m_services.host.GetClientIdentity(), false));
    m_asked.insert(path);
}

void ClientConsole::SessionHeld(const Message& message) {
    if (message.fields.Text(2) != m_services.host.GetClientIdentity()) return;
    Later([this, path = message.document.GetDocKey(),
           holder = std::string(message.fields.Text(1))] { ForceAsked(path, holder); });
}

void ClientConsole::ForceAsked(const std::string& path, const std::string& holder) {
    if (m_asked.count(path) == 0) return;
    if (!Ask(kForce, {path, holder})) return;
    SendText(path, AskSessionText(m_services.host.GetClientIdentity(), true));
}

// ---- handing over

// The first field says whether the person here is asked, not the flag behind it. An identity hardly
// ever reads as that number, so what is forced is forced without a word.
void ClientConsole::AskSession(const Message& message) {
    const std::string asking(message.fields.Text(1));
    if (asking.empty() || asking == m_services.host.GetClientIdentity()) return;
    if (message.fields.Number(1) != kAskWord) {
        return HandOver(message.document, asking, message.fields.Number(2) != 0);
    }
    Later([this, path = message.document.GetDocKey(), asking] { HandOverAsked(path, asking); });
}

void ClientConsole::HandOver(engine::CKalvexDoc& document, std::string_view asking, bool force) {
    if (!document.State().m_bControlAllowed) return;
    if (!force && asking.ends_with(kConsoleSuffix)) {
        SendText(document.GetDocKey(),
                 NamesText(MessageCode::SessionHeld, m_services.host.GetClientIdentity(), asking));
        return;
    }
    PassTo(document, asking);
}

void ClientConsole::HandOverAsked(const std::string& path, const std::string& asking) {
    engine::CKalvexDoc* document = m_services.host.FindScript(path);
    if (document == nullptr || !document->State().m_bControlAllowed) return;
    if (!document->IsReadOnly() && document->IsModified()) {
        const bool saves = Ask(kSaveToGive, {asking, path});
        document = m_services.host.FindScript(path);
        if (document == nullptr || !document->State().m_bControlAllowed) return;
        if (saves) {
            document->SaveOrLog();
        } else {
            document->ExpandIncludes(false);
        }
    }
    PassTo(*document, asking);
}

void ClientConsole::PassTo(engine::CKalvexDoc& document, std::string_view asking) {
    GiveUp(document);
    SendText(document.GetDocKey(),
             NamesText(MessageCode::PassSession, m_services.host.GetClientIdentity(), asking));
}

void ClientConsole::GiveUp(engine::CKalvexDoc& document) {
    workbench::DocumentModel& model = m_services.host.ModelOf(document);
    document.SetReadOnly(true);
    document.AllowControl(false);
    document.ClearLine();
    model.Markers().DeleteAllMarkers(workbench::MarkerCurrentLine | kBreakpoints);
    model.RefreshTitle();
}

// ---- taking and losing

void ClientConsole::PassSession(const Message& message) {
    const MessageFields& fields = message.fields;
    const std::string& identity = m_services.host.GetClientIdentity();
    if (fields.Text(1).empty() || fields.Text(1) == identity) return;
    engine::CKalvexDoc& document = message.document;
    if (fields.Text(2) != identity || m_asked.erase(document.GetDocKey()) == 0) return;
    workbench::ScriptMarkers& markers = m_services.host.ModelOf(document).Markers();
    markers.DeleteAllMarkers(kBreakpoints);
    for (const int line : ReadBreakpoints(fields.Text(5))) {
        if (line >= 0) markers.SetBreakpoint(line, true);
    }
    document.MirrorState(fields.Number(3));
    document.AllowControl(true);
    if (document.State().m_bRunning) document.PrepareRun();
    document.SetReadOnly((document.GetStateWord() & kOfARun) != 0);
    m_services.host.ModelOf(document).RefreshTitle();
    document.MirrorLine(fields.Number(4));
    WriteOf(ControlKind::Line, document.GetDocKey(),
            value::CVal(document.State().m_bMinimised ? LineReportsUnwanted : LineReportsWanted));
}

void ClientConsole::Lose(engine::CKalvexDoc& document) {
    document.MirrorState(0);
    document.AllowControl(false);
    document.SetReadOnly(true);
    document.ClearLine();
    m_services.host.ModelOf(document).ClearAllMarkers();
}

}  // namespace kalvex::console
