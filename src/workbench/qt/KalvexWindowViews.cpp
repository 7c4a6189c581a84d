// What the main window shows of its scripts, and which commands can be given.
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMdiSubWindow>
#include <QMimeData>
#include <QStatusBar>
#include <algorithm>
#include <utility>

#include "text/TextFormat.h"
#include "workbench/model/ScheduleProof.h"
#include "workbench/qt/Colours.h"
#include "workbench/qt/KalvexWindow.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

using workbench::Command;

namespace {

// Each view that is seen follows its script 25 times a second.
constexpr int kViewPeriod = 40;     // milliseconds
constexpr int kLeastViewPause = 2;  // milliseconds, between two views

constexpr const char* kCaret = platform::Translatable("Linia %4d, Wiersz %4d");
QString CaretText(QString text, int line, int column) {
    constexpr QLatin1String kPlace("%4d");
    for (const int number : {line, column}) {
        text.replace(text.indexOf(kPlace), kPlace.size(),
                     QString::number(number).rightJustified(4));
    }
    return text;
}

constexpr const char* kInsert = platform::Translatable("WST");
constexpr const char* kOverwrite = platform::Translatable("NAD");

struct LevelRow {
    int level;
    Command command;
};

constexpr LevelRow kLevels[] = {
    {platform::LogErrors, Command::LevelErrors},
    {platform::LogEvents, Command::LevelEvents},
    {platform::LogTransmission, Command::LevelTransmission},
};

struct SchemeRow {
    Scheme scheme;
    Command command;
};

constexpr SchemeRow kSchemes[] = {
    {Scheme::Light, Command::SchemeLight},
    {Scheme::Dark, Command::SchemeDark},
    {Scheme::Desktop, Command::SchemeDesktop},
};

}  // namespace

FramesCalls KalvexWindow::FrameCallsOf() {
    FramesCalls calls;
    calls.close = [this](engine::CKalvexDoc& document) {
        Do([this, &document] { Files().Close(document); });
    };
    calls.minimised = [this](engine::CKalvexDoc& document, bool minimised) {
        if (m_app->IsConsoleClient()) return m_app->RemoteModule().OnMinimised(document, minimised);
        document.SetMinimised(minimised);
    };
    calls.editorCalls = [this](engine::CKalvexDoc& document) { return EditorCallsOf(document); };
    calls.makeVariables = [this](engine::CKalvexDoc& document) {
        return std::make_unique<CVariablesView>(CVariablesView::Parts{
            m_translator,
            m_app->IsConsoleClient()
                ? ClientVariables(m_app->RemoteModule(), document,
                                  m_app->Documents().ModelOf(document).Variables())
                : ModuleVariables(document),
            m_app->Configuration().columnWidths,
            [this](const std::vector<unsigned int>& widths) { m_app->SetColumnWidths(widths); }});
    };
    calls.isShown = [this](CChildFrame& frame) {
        return isVisible() && !isMinimized() && frame.IsSeen();
    };
    return calls;
}

EditorCalls KalvexWindow::EditorCallsOf(engine::CKalvexDoc& document) {
    EditorCalls calls;
    calls.toggleBreakpoint = [this, &document](int line) {
        Do([this, &document, line] { ToggleBreakpointAt(document, line); });
    };
    calls.deleteBreakpoints = [this] { Run(Command::DeleteBreakpoints); };
    calls.caretMoved = [this] { m_caretTimer.start(0); };
    calls.zoomed = [this](int zoom) {
        if (zoom == m_editorLook.zoom) return;
        m_editorLook.zoom = zoom;
        Look().SetZoom(zoom);
        m_frames->SetLook(m_editorLook);
    };
    calls.filesDropped = [this](const QList<QUrl>& files) { OpenDropped(files); };
    calls.showMessage = [this](const QString& text) { Ask(BoxKind::Message, text); };
    calls.fillTextMenu = [this](QMenu& menu) { FillTextMenu(menu); };
    calls.currentLineTip = [this, &document] {
        return StandingTip(document, document.State().m_nCurrentLine, m_translator);
    };
    if (m_app != nullptr && m_app->IsConsoleClient()) {
        calls.linesInserted = [this, &document](int line, int count) {
            m_app->RemoteModule().OnLinesInserted(document, line, count);
        };
        calls.linesDeleted = [this, &document](int line, int count) {
            m_app->RemoteModule().OnLinesDeleted(document, line, count);
        };
    }
    return calls;
}

// ---- what is active

engine::CKalvexDoc* KalvexWindow::ActiveScript() const {
    return m_frames->DocumentOf(m_area->activeSubWindow());
}

CKalvexEditCtrl* KalvexWindow::ActiveEditor() const {
    QMdiSubWindow* const frame = m_area->activeSubWindow();
    engine::CKalvexDoc* const document = m_frames->DocumentOf(frame);
    if (document == nullptr || m_frames->IsVariables(frame) || frame->isMinimized()) return nullptr;
    return m_frames->FrameOf(*document).Editor();
}

CVariablesView* KalvexWindow::ActiveVariables() const {
    QMdiSubWindow* const frame = m_area->activeSubWindow();
    engine::CKalvexDoc* const document = m_frames->DocumentOf(frame);
    return m_frames->IsVariables(frame) ? m_frames->VariablesOf(*document) : nullptr;
}

bool KalvexWindow::IsLogActive() const {
    return m_logFrame != nullptr && m_area->activeSubWindow() == m_logFrame;
}

// ---- which commands can be given

workbench::CommandState KalvexWindow::GetCommandState() const {
    workbench::CommandState state;
    const platform::UserSession& users = m_world.users;
    const app::KalvexConfiguration& configuration = m_app->Configuration();
    state.closeLevel = users.CheckRight(m_app->GetCloseLevel());
    state.configurationRight = users.CheckActiveUserRight(configuration.configurationRight, {});
    state.controlRight = users.CheckActiveUserRight(configuration.controlRight, {});
    state.level100 = users.CheckRight(100);
    state.loggedIn = !users.GetActiveUserName().empty();
    state.consoleClient = m_app->IsConsoleClient();
    state.window = m_area->activeSubWindow() != nullptr;
    state.variablesActive = ActiveVariables() != nullptr;
    state.logActive = IsLogActive();
    state.variablesKept = m_variables == nullptr || !m_variables->IsReloadMarked();
    state.selection = state.logActive && m_log->HasSelection();
    if (const engine::CKalvexDoc* document = ActiveScript()) AddScriptState(*document, state);
    return state;
}

void KalvexWindow::AddScriptState(const engine::CKalvexDoc& document,
                                  workbench::CommandState& state) const {
    const engine::RunState& run = document.State();
    state.script = true;
    state.path = !document.GetPathName().empty();
    state.held = run.m_bControlAllowed;
    state.running = run.m_bRunning;
    state.paused = run.m_bPaused;
    state.minimised = run.m_bMinimised;
    state.readOnly = document.IsReadOnly();
    state.hasVariablesWindow = m_frames->HasVariables(document);
    state.hasBreakpoints = !m_app->Documents()
                                .ModelOf(document)
                                .Markers()
                                .LinesOf(workbench::MarkerBreakpoint)
                                .empty();
    state.trendable = CanDraw(document);
    CKalvexEditCtrl* const editor = ActiveEditor();
    if (editor == nullptr) return;
    state.scheduleLine = workbench::HasSchedule(document, editor->CaretLine());
    state.editor = true;
    state.selection = editor->HasSelection();
    state.canUndo = editor->CanDo(workbench::UndoDirection::Undo);
    state.canRedo = editor->CanDo(workbench::UndoDirection::Redo);
    // Some platforms begin with none.
    const QMimeData* const clipboard = QApplication::clipboard()->mimeData();
    state.clipboard = clipboard != nullptr && clipboard->hasText();
    state.canComplete = CanComplete(*editor);
}

// What stands before the caret is looked up in the whole text, so only where there is something
// new.
bool KalvexWindow::CanComplete(CKalvexEditCtrl& editor) const {
    const CompletionPlace place{&editor, editor.CaretPosition(), editor.length()};
    if (!(place == m_completionPlace)) {
        m_completionPlace = place;
        m_canComplete = editor.CanComplete();
    }
    return m_canComplete;
}

void KalvexWindow::UpdateCommands() {
    if (!m_shown) return;
    m_actions->Update(GetCommandState());
    const int level = m_app->Log().GetLevel();
    for (const LevelRow& row : kLevels) m_actions->Check(row.command, row.level == level);
    for (const SchemeRow& row : kSchemes) m_actions->Check(row.command, row.scheme == m_scheme);
    m_actions->Check(Command::LineNumbers, m_editorLook.lineNumbers);
    m_actions->Check(Command::AutoScroll, m_autoScroll);
    m_actions->Check(Command::Standing, m_standingDock->isVisible());
    m_actions->Check(Command::ValuesBeside, m_valuesBeside);
    m_actions->Check(Command::StatusBar, statusBar()->isVisible());
}

void KalvexWindow::UpdateState() {
    UpdateCommands();
    UpdateStatusBar();
    FillWindowList();
    FillRecentFiles();
    for (CChildFrame* frame : m_frames->All()) {
        frame->setWindowModified(frame->Document().IsModified());
    }
    Do([this] {
        Files().KeepCopies();
        Files().OfferLater();
    });
    UpdateStanding();
}

void KalvexWindow::UpdateStatusBar() {
    if (!m_shown) return;
    const CKalvexEditCtrl* editor = nullptr;
    if (const engine::CKalvexDoc* document = ActiveScript()) {
        editor = m_frames->FrameOf(*document).Editor();
    }
    QString caret;
    if (editor != nullptr) {
        caret = CaretText(Translated(m_translator, kCaret), editor->CaretLine() + 1,
                          editor->CaretColumn() + 1);
    }
    m_status[1]->setText(caret);
    m_status[2]->setText(Translated(
        m_translator, editor != nullptr && editor->IsOverwriting() ? kOverwrite : kInsert));
    m_status[3]->setText(ToQt(m_world.users.GetActiveUserName()));
    m_status[4]->setText(ToQt(m_app->Log().GetLevelWord()));
}

// ---- views

// One window a time, so that no picture of many holds up a tick: each of those that are seen has
// its turn in the period.
void KalvexWindow::ApplyViews() {
    m_frames->ApplyNext();
    const auto frames = m_frames->All();
    const auto seen = std::ranges::count_if(frames, [](CChildFrame* f) { return f->IsSeen(); });
    m_viewTimer.setInterval(
        std::max(kLeastViewPause, kViewPeriod / std::max(1, static_cast<int>(seen))));
}

void KalvexWindow::ApplyScheme() {
    const bool dark = m_scheme == Scheme::Dark || (m_scheme == Scheme::Desktop && IsDesktopDark());
    QApplication::setPalette(dark ? DarkPalette() : LightPalette());
    m_editorLook.dark = dark;
    m_frames->SetLook(m_editorLook);
}

// An entry is done with before the menu is filled anew.
void KalvexWindow::FillRecentFiles() {
    const QStringList files = Look().GetRecentFiles();
    if (files == m_recentFiles) return;
    m_recentFiles = files;
    QMenu& menu = m_actions->Menu("Plik/Ostatnie");
    menu.clear();
    for (const QString& path : files) {
        QAction* const action = menu.addAction(QString(path).replace('&', QStringLiteral("&&")));
        connect(action, &QAction::triggered, this, [this, path] {
            QTimer::singleShot(0, this,
                               [this, path] { Do([this, &path] { Files().Open(path); }); });
        });
    }
}

// The windows by their titles, behind the entries of the menu.
void KalvexWindow::FillWindowList() {
    const QList<QMdiSubWindow*> frames = m_area->subWindowList();
    if (std::ranges::equal(frames, m_windowEntries,
                           [](const QMdiSubWindow* frame, const WindowEntry& entry) {
                               return entry.frame == frame && entry.title == frame->windowTitle();
                           })) {
        return;
    }
    for (const WindowEntry& entry : m_windowEntries) delete entry.action;
    m_windowEntries.clear();
    QMenu& menu = m_actions->Menu("Okno");
    for (QMdiSubWindow* frame : frames) {
        QString title = frame->windowTitle();
        title.remove(QStringLiteral("[*]")).replace('&', QStringLiteral("&&"));
        QAction* const action = menu.addAction(title);
        connect(action, &QAction::triggered, frame, [this, frame] {
            if (frame->isMinimized()) frame->showNormal();
            m_area->setActiveSubWindow(frame);
        });
        m_windowEntries.push_back({frame, frame->windowTitle(), action});
    }
}

// Everything here is in the menu bar as well.
void KalvexWindow::FillTextMenu(QMenu& menu) {
    for (const Command command :
         {Command::Undo, Command::Redo, Command::None, Command::Cut, Command::Copy, Command::Paste,
          Command::Delete, Command::None, Command::SelectAll, Command::None, Command::KeywordList,
          Command::InsertVariables}) {
        if (command == Command::None) {
            menu.addSeparator();
        } else {
            menu.addAction(m_actions->Action(command));
        }
    }
}

}  // namespace kalvex::window
