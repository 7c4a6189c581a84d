#include "test_console.h"

#include <algorithm>
#include <utility>

namespace kalvex::console {

TestConsole::TestConsole(platform::Clock& clock, const std::string& folder, std::string identity,
                         std::string user)
    : paths(folder),
      users(std::move(user)),
      services{{clock, log, translator, users, paths, language::Functions()},
               language::Statements(),
               questions},
      m_identity(std::move(identity)) {
    sources::SourceServices world{log, translator, users, network, this};
    world.clientName = m_identity;
    client = std::make_unique<sources::CClientInterface>(std::move(world));
    console = std::make_unique<ClientConsole>(
        ClientServices{log, translator, questions, loop, *client, *this, "Kalvex"});
    services.sources = client.get();
    services.console = console.get();
    services.consoleClient = true;
}

void TestConsole::Stop() {
    documents.clear();
    client.reset();
}

std::string TestConsole::State(std::string_view path) {
    const engine::CKalvexDoc* document = Find(path);
    if (document == nullptr) return "-";
    return std::to_string(document->GetStateWord()) + "/" +
           std::to_string(document->State().m_nCurrentLine) +
           (document->IsReadOnly() ? " R" : " ") + (document->State().m_bControlAllowed ? "C" : "");
}

std::vector<int> TestConsole::Breakpoints(std::string_view path) {
    return Model(path).Markers().LinesOf(workbench::MarkerBreakpoint);
}

std::vector<int> TestConsole::MarkedLines(std::string_view path) {
    return Model(path).Markers().LinesOf(workbench::MarkerCurrentLine);
}

std::vector<std::string> TestConsole::Sent() {
    return std::exchange(m_sent, {});
}

int TestConsole::Subscribed() {
    return std::exchange(m_subscribed, 0);
}

std::vector<std::string> TestConsole::Shown() {
    return std::exchange(m_shown, {});
}

void TestConsole::Edit(std::string_view path, std::string_view text) {
    Find(path)->Text().SetText(text::FromUtf8(text));
    Find(path)->SetModified(true);
}

void TestConsole::Close(std::string_view path) {
    engine::CKalvexDoc& document = *Find(path);
    console->OnClosing(document);
    CloseScript(document);
}

engine::CKalvexDoc* TestConsole::FindScript(std::string_view path) {
    const std::string full = paths.GetFullPath(path);
    const auto found = std::ranges::find_if(
        documents, [&](const auto& document) { return document->GetPathName() == full; });
    return found == documents.end() ? nullptr : found->get();
}

engine::CKalvexDoc* TestConsole::OpenScript(std::string_view path) {
    auto document = std::make_unique<engine::CKalvexDoc>(services);
    std::string error;
    if (!document->Open(path, error)) return nullptr;
    document->SetView(&models[document.get()]);
    return documents.emplace_back(std::move(document)).get();
}

void TestConsole::CloseScript(engine::CKalvexDoc& document) {
    const engine::CKalvexDoc* const closed = &document;
    std::erase_if(documents, [closed](const auto& open) { return open.get() == closed; });
    models.erase(closed);
}

std::vector<engine::CKalvexDoc*> TestConsole::Scripts() {
    std::vector<engine::CKalvexDoc*> scripts;
    for (const auto& document : documents) scripts.push_back(document.get());
    return scripts;
}

void TestConsole::MinimiseFrame(engine::CKalvexDoc& document) {
    m_shown.push_back("minimise " + document.GetDocKey());
}

void TestConsole::ShowVariables(engine::CKalvexDoc& document, int row) {
    std::string text = "variables " + document.GetDocKey();
    if (row >= 0) {
        for (const std::string& cell :
             models.at(&document).Variables().CellsOf(static_cast<std::size_t>(row))) {
            text += "|" + text::ToUtf8(cell);
        }
    }
    m_shown.push_back(text);
}

void TestConsole::ShowMessage(std::string_view text) {
    m_shown.push_back("message " + text::ToUtf8(text));
}

void TestConsole::UpdateTitle() {
    m_shown.push_back(console->IsConnected() ? "connected" : "not connected");
}

void TestConsole::LogFromModule(std::string_view text, std::int64_t time, int lineLevel) {
    m_shown.push_back("log " + std::to_string(lineLevel) + " " + std::to_string(time) + " " +
                      text::ToUtf8(text));
}

void TestConsole::Record(const vantrel::CClientConnection&, vantrel::JournalEntry entry) {
    if (entry.operation == "Subscribe") ++m_subscribed;
    if (entry.operation != "AddCurrentDataModifyRequest") return;
    std::string text = text::ToUtf8(value::ValueToText(*entry.value));
    std::ranges::replace(text, '\t', '|');
    m_sent.push_back(*entry.variable + ": " + text);
}

}  // namespace kalvex::console
