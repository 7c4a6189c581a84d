// The application as the person at its window uses it: scripts by hand, settings that change.
#include "app/KalvexApp.h"
#include "platform/Files.h"
#include "text/CodePage.h"

namespace kalvex::app {

engine::CKalvexDoc* CKalvexApp::OpenScript(std::string_view path, std::string& error) {
    if (m_clientConsole) {
        const std::string file = platform::NativePath(m_paths->GetFullPath(path));
        std::string content;
        const bool readable = platform::ReadWholeFile(file, content, error);
        if (!readable && m_documents->Find(path) == nullptr) return nullptr;
        error.clear();
        return m_clientConsole->Console().OpenByHand(path);
    }
    if (engine::CKalvexDoc* open = m_documents->Find(path)) return open;
    engine::CKalvexDoc* document = m_documents->Open(path, error);
    if (document != nullptr) m_console->OnOpened(*document, true);
    return document;
}

engine::CKalvexDoc& CKalvexApp::NewScript() {
    engine::CKalvexDoc& document = m_documents->OpenNew();
    if (m_clientConsole) document.AllowControl(false);
    return document;
}

bool CKalvexApp::SaveScriptAs(engine::CKalvexDoc& document, std::string_view path,
                              std::string& error) {
    const std::string former = document.GetPathName();
    const bool moves = m_paths->GetFullPath(path) != former;
    if (moves && !former.empty()) {
        if (m_console) m_console->OnClosing(document);
        if (m_clientConsole) m_clientConsole->Console().OnClosing(document);
    }
    m_documents->SetFile(document, path);
    const bool saved = document.Save(error);
    if (!saved) m_documents->SetFile(document, former);
    if (moves && m_console && !document.GetDocKey().empty()) m_console->OnOpened(document, true);
    return saved;
}

void CKalvexApp::CloseScript(engine::CKalvexDoc& document) {
    if (m_clientConsole && !document.GetDocKey().empty()) {
        m_clientConsole->Console().OnClosing(document);
    }
    CloseDocument(document);
}

void CKalvexApp::AskForSession(engine::CKalvexDoc& document) {
    if (m_clientConsole) return m_clientConsole->Console().AskForSession(document);
    m_console->AskForSession(document);
}

void CKalvexApp::Configure(KalvexConfiguration configuration) {
    const bool isNewPeriod = configuration.refreshPeriod != m_configuration.refreshPeriod;
    m_configuration = std::move(configuration);
    if (isNewPeriod) m_frame->SetRefreshPeriod(m_configuration.refreshPeriod);
    m_store->WriteApplication(m_configuration);
}

void CKalvexApp::SetColumnWidths(std::vector<unsigned int> widths) {
    m_configuration.columnWidths = std::move(widths);
    m_store->WriteColumns(m_configuration);
}

bool CKalvexApp::EditSources(
    const std::function<bool(std::vector<sources::CSourceDesc>&)>& change) {
    const auto changeAll = [&](std::vector<sources::CSourceDesc>& sources) {
        if (!change(sources)) return false;
        m_configuration.sources = sources;
        if (m_clientInterface) m_clientInterface->Services().descriptions = sources;
        return true;
    };
    return m_store->EditSources(changeAll);
}

}  // namespace kalvex::app
