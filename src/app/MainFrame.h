// The timers of the process, and what its main window shows of the scripts; it works without a
// window as well. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "app/AppWorld.h"
#include "app/ScriptDocuments.h"
#include "app/TickDriver.h"

namespace kalvex::app {

// What the timers do beside the scripts and the window.
struct FrameWork {
    std::function<void()> autoStart;
    std::function<void()> periodic;  // of the data sources
};

class CMainFrame final : public TickSource {
  public:
    enum Timer : int { TickTimer = 1, AutoStartTimer = 2, RefreshTimer = 4 };

    // Nothing is owned; the window may be null. The timers of a console client do nothing.
    CMainFrame(AppLoop& loop, const platform::Translator& translator, ScriptDocuments& documents,
               MainWindow* window, FrameWork work, bool consoleClient);
    ~CMainFrame() override;
    CMainFrame(const CMainFrame&) = delete;
    CMainFrame& operator=(const CMainFrame&) = delete;

    // Begins the ticks, and refreshing in its usual period. False when there is no timer to be had,
    // as with the next two.
    bool Create();
    bool SetAutoStartTimer(std::int64_t seconds);
    bool SetRefreshPeriod(std::int64_t milliseconds);

    void OnTimer(int id);

    void RunTick() override { OnTimer(TickTimer); }
    // Ticks are needed while a script is open, or an error is shown that is to go.
    bool NeedsTicks() const override {
        return !m_consoleClient && (!m_documents.All().empty() || m_errorShown);
    }
    int GetIdleTicks() const override { return m_documents.Ticker().GetIdleTicks(); }
    void SkipTicks(int count) override { m_documents.Ticker().SkipTicks(count); }

    // Meanwhile there are no ticks.
    void SetOpeningScripts(bool opening);

    void SetStatusLine(std::string_view text);
    const std::string& GetStatusLine() const { return m_statusLine; }

    // The icon tells of a script that stands on an error.
    bool IsErrorShown() const { return m_errorShown; }

  private:
    bool SetTimer(int id, std::int64_t milliseconds);
    void OnTick();
    void OnAutoStart();
    void OnRefresh();

    AppLoop& m_loop;
    const platform::Translator& m_translator;
    ScriptDocuments& m_documents;
    MainWindow* const m_window;
    const FrameWork m_work;
    const bool m_consoleClient;
    bool m_openingScripts = false;
    bool m_errorShown = false;
    std::string m_statusLine;
};

}  // namespace kalvex::app
