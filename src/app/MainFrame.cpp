#include "app/MainFrame.h"

#include <utility>

namespace kalvex::app {

namespace {

constexpr std::int64_t kRefreshPeriod = 1000;  // milliseconds

}  // namespace

CMainFrame::CMainFrame(AppLoop& loop, const platform::Translator& translator,
                       ScriptDocuments& documents, MainWindow* window, FrameWork work,
                       bool consoleClient)
    : m_loop(loop),
      m_translator(translator),
      m_documents(documents),
      m_window(window),
      m_work(std::move(work)),
      m_consoleClient(consoleClient) {}

CMainFrame::~CMainFrame() {
    m_loop.SetTickSource(nullptr);
    for (const int id : {AutoStartTimer, RefreshTimer}) m_loop.KillTimer(id);
}

bool CMainFrame::SetTimer(int id, std::int64_t milliseconds) {
    return m_loop.SetTimer(id, milliseconds, [this, id] { OnTimer(id); });
}

bool CMainFrame::Create() {
    m_loop.SetTickSource(this);
    return SetTimer(RefreshTimer, kRefreshPeriod);
}

bool CMainFrame::SetAutoStartTimer(std::int64_t seconds) {
    return SetTimer(AutoStartTimer, seconds * 1000);
}

bool CMainFrame::SetRefreshPeriod(std::int64_t milliseconds) {
    return SetTimer(RefreshTimer, milliseconds);
}

void CMainFrame::OnTimer(int id) {
    if (m_consoleClient) return;
    switch (id) {
        case TickTimer:
            return OnTick();
        case AutoStartTimer:
            return OnAutoStart();
        case RefreshTimer:
            return OnRefresh();
    }
}

void CMainFrame::OnTick() {
    m_documents.Ticker().RunTick();
    const bool errorWanted = m_documents.Ticker().IsErrorStanding();
    if (errorWanted == m_errorShown) return;
    m_errorShown = errorWanted;
    if (m_window == nullptr) return;
    if (errorWanted) {
        m_window->ModifyTrayIcon(
            true, "Kalvex",
            m_translator.Translate("Jeden ze skryptów wygenerował błąd.\nSzczegółowe informacje w "
                                   "oknie rejestracji"));
    } else {
        m_window->ModifyTrayIcon(false, {}, {});
    }
}

void CMainFrame::OnAutoStart() {
    m_loop.KillTimer(AutoStartTimer);
    m_work.autoStart();
}

void CMainFrame::OnRefresh() {
    m_work.periodic();
    if (m_window == nullptr) return;
    if (!m_openingScripts) m_window->UpdateToolBar();
    for (const std::unique_ptr<engine::CKalvexDoc>& document : m_documents.All()) {
        if (document->State().m_bRunning) m_window->RefreshVariables(*document);
    }
}

void CMainFrame::SetOpeningScripts(bool opening) {
    m_openingScripts = opening;
    m_documents.Ticker().Block(opening);
}

void CMainFrame::SetStatusLine(std::string_view text) {
    m_statusLine = text;
    if (m_window != nullptr) m_window->SetStatusLine(text);
}

}  // namespace kalvex::app
