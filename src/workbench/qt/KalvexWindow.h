// The main window: menus and tool bars, the area with the windows of scripts and of the log, the
// status bar, the icon in the panel. What a person does here becomes calls of the application, and
// what the application shows comes here. Main thread.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QPointer>
#include <QTimer>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/KalvexApp.h"
#include "app/MainWindow.h"
#include "platform/Clock.h"
#include "platform/Crypt.h"
#include "platform/UserSession.h"
#include "platform/UserStore.h"
#include "workbench/model/FindRequest.h"
#include "workbench/model/LogReference.h"
#include "workbench/model/SourceVariables.h"
#include "workbench/model/StandingRefresh.h"
#include "workbench/qt/CommandActions.h"
#include "workbench/qt/InsertVariablesDialog.h"
#include "workbench/qt/LogWindow.h"
#include "workbench/qt/LookSettings.h"
#include "workbench/qt/QtLoop.h"
#include "workbench/qt/ScriptFiles.h"
#include "workbench/qt/ScriptFrames.h"
#include "workbench/qt/ScriptPrinter.h"
#include "workbench/qt/StandingPane.h"
#include "workbench/qt/TrayIcon.h"

class QDockWidget;

namespace kalvex::window {

// What the window needs of its process; all of it outlives the window.
struct WindowWorld {
    QtLoop& loop;
    const platform::Clock& clock;
    const platform::Translator& translator;
    platform::UserSession& users;
    const platform::UserStore& userStore;
    const platform::CCrypt& crypt;
};

class KalvexWindow final : public QMainWindow, public app::MainWindow {
  public:
    explicit KalvexWindow(const WindowWorld& world);
    ~KalvexWindow() override;

    // Before the application starts; it outlives the use of the window.
    void SetApp(app::CKalvexApp& app);

    // ---- for the application
    bool AskYesNo(std::string_view text) override;
    void ShowMessage(std::string_view text) override;
    bool ShowCmdLineParamsDlg(std::string_view help) override;
    bool Login() override;
    bool SaveModified() override;
    void SetTitle(std::string_view title) override;
    void Show() override;
    void Hide() override;
    void SetStatusLine(std::string_view text) override;
    void EnableCloseEntry(bool enabled) override;
    void ModifyTrayIcon(bool error, std::string_view title, std::string_view text) override;
    void UpdateToolBar() override;
    void MinimiseFrame(engine::CKalvexDoc& document) override;
    void RefreshVariables(engine::CKalvexDoc& document) override;
    void OnScriptOpened(engine::CKalvexDoc& document) override;
    void OnScriptClosing(engine::CKalvexDoc& document) override;

    // A person gives the command, whether it can be given or not.
    void Run(workbench::Command command);
    // Whether the window knows what to do for it.
    static bool HasHandler(workbench::Command command);
    // By the rules of the commands.
    workbench::CommandState GetCommandState() const;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    struct CommandHandler;
    static const CommandHandler kHandlers[];

    // ---- parts
    // The path, without an ending, of what is kept beside the profile.
    std::string GetBesideProfile() const;
    LookSettings& Look();
    ScriptFiles& Files();
    workbench::SourceVariables& Variables();
    void AddStatusBar();
    void AddToolBars();
    void AddUndoButton(QToolBar& bar, QAction* before, workbench::UndoDirection direction);
    void RestoreLook();
    FramesCalls FrameCallsOf();
    EditorCalls EditorCallsOf(engine::CKalvexDoc& document);

    // ---- boxes
    BoxAnswer Ask(BoxKind kind, const QString& text);
    // Documents stay while it runs, and scripts are found as of now.
    void Do(const std::function<void()>& work);

    // ---- what is active; null for nothing
    engine::CKalvexDoc* ActiveScript() const;
    CKalvexEditCtrl* ActiveEditor() const;
    CVariablesView* ActiveVariables() const;
    FindBar& ActiveBar();
    bool IsLogActive() const;

    // ---- state
    void AddScriptState(const engine::CKalvexDoc& document, workbench::CommandState& state) const;
    bool CanComplete(CKalvexEditCtrl& editor) const;
    void UpdateCommands();
    void UpdateState();
    void UpdateStatusBar();
    void ApplyViews();
    void ApplyScheme();
    void FillRecentFiles();
    void FillWindowList();
    void FillTextMenu(QMenu& menu);

    // ---- the frame
    void RestoreWindow();
    void OnTrayActivated();
    void QuitProgram();

    // ---- commands
    void StartScript();
    void ResetScript();
    void ToggleBreakpoint();
    void ToggleBreakpointAt(engine::CKalvexDoc& document, int line);
    void DeleteBreakpoints();
    void ToggleVariables();
    void InsertVariables();
    void OpenDropped(const QList<QUrl>& files);
    void CopySelection();
    void Find();
    void FindNext();
    void GoToLine();
    void ChooseFont();
    void ChooseScheme(Scheme scheme);
    void ToggleLineNumbers();
    void ToggleStatusBar();
    void ToggleAutoScroll();
    void ShowLog();
    void ShowReference(const workbench::LogReference& reference);
    void Configure();
    void EditSources();
    void RenameVariables();
    void LogIn();
    void LogOut();
    void ShowHelp();
    std::optional<workbench::FindRequest> AskWhatToFind(QWidget* parent);

    // ---- more about a script
    void AddStandingDock();
    void ToggleStanding();
    void UpdateStanding();
    void ToggleValuesBeside();
    void ShowSchedule();
    bool CanDraw(const engine::CKalvexDoc& document) const;
    void ShowTrend();
    void CloseTrends(const engine::CKalvexDoc& document);
    CKalvexEditCtrl& PrintedEditor();
    ScriptPrinter& Printer();

    const WindowWorld m_world;
    const platform::Translator& m_translator;
    app::CKalvexApp* m_app = nullptr;
    QMdiArea* m_area;
    std::unique_ptr<CommandActions> m_actions;
    std::unique_ptr<LookSettings> m_look;
    std::unique_ptr<ScriptFrames> m_frames;
    std::unique_ptr<ScriptFiles> m_files;
    std::unique_ptr<workbench::SourceVariables> m_variables;
    std::map<const engine::CKalvexDoc*, InsertMemory> m_insertMemories;
    std::map<const engine::CKalvexDoc*, QPointer<QDialog>> m_insertDialogs;
    TrayIcon m_tray;
    QPointer<QMdiSubWindow> m_logFrame;
    QPointer<CKalvexLogView> m_log;
    bool m_autoScroll = true;
    std::array<QLabel*, 5> m_status{};
    QString m_statusLine;
    QString m_statusTip;
    StandingPane* m_standing = nullptr;
    QDockWidget* m_standingDock = nullptr;
    workbench::StandingRefresh m_standingRefresh;
    bool m_valuesBeside = true;
    std::map<const engine::CKalvexDoc*, QList<QPointer<QMdiSubWindow>>> m_trends;
    std::unique_ptr<ScriptPrinter> m_printer;
    struct CompletionPlace {
        const CKalvexEditCtrl* editor = nullptr;
        int position = 0;
        int length = 0;

        bool operator==(const CompletionPlace&) const = default;
    };
    mutable CompletionPlace m_completionPlace;
    mutable bool m_canComplete = false;  // there
    QStringList m_recentFiles;           // as the menu has them
    struct WindowEntry {
        QPointer<QMdiSubWindow> frame;
        QString title;
        QAction* action;
    };
    std::vector<WindowEntry> m_windowEntries;
    QStringList m_boxTexts;  // of the boxes that are open
    QTimer m_viewTimer;
    QTimer m_stateTimer;
    QTimer m_caretTimer;  // runs when the caret has moved or the text has changed
    EditorLook m_editorLook;
    Scheme m_scheme = Scheme::Desktop;
    bool m_shown = false;
};

}  // namespace kalvex::window
