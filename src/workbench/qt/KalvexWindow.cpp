#include "workbench/qt/KalvexWindow.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMdiSubWindow>
#include <QMimeData>
#include <QScreen>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <utility>

#include "workbench/qt/Icons.h"
#include "workbench/qt/Texts.h"
#include "workbench/qt/UndoBar.h"

namespace kalvex::window {

namespace {

constexpr int kStatePeriod = 150;  // milliseconds
constexpr const char* kStatusNames[] = {"statusMessage", "statusCaret", "statusMode", "statusUser",
                                        "statusLevel"};

}  // namespace

KalvexWindow::KalvexWindow(const WindowWorld& world)
    : m_world(world),
      m_translator(world.translator),
      m_area(new QMdiArea(this)),
      m_tray(world.translator, {[this] { OnTrayActivated(); }, [this] { RestoreWindow(); },
                                [this] { showMinimized(); }, [this] { QuitProgram(); },
                                [this] {
                                    RestoreWindow();
                                    Do([this] { ShowLog(); });
                                }}) {
    setObjectName(QStringLiteral("mainWindow"));
    setWindowIcon(ProgramIcon(false));
    setAcceptDrops(true);
    resize(QSize(1200, 800).boundedTo(screen()->availableSize()));
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_area->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(m_area);
    m_actions = std::make_unique<CommandActions>(
        *this, m_translator, [this](workbench::Command command) { Run(command); });
    m_frames = std::make_unique<ScriptFrames>(*m_area, m_translator, FrameCallsOf());
    AddToolBars();
    AddStatusBar();
    AddStandingDock();
    connect(&m_viewTimer, &QTimer::timeout, this, [this] { ApplyViews(); });
    m_caretTimer.setSingleShot(true);
    connect(&m_caretTimer, &QTimer::timeout, this, [this] {
        UpdateCommands();
        UpdateStatusBar();
    });
    connect(&m_stateTimer, &QTimer::timeout, this, [this] { UpdateState(); });
    connect(m_area, &QMdiArea::subWindowActivated, this, [this] { UpdateCommands(); });
}

KalvexWindow::~KalvexWindow() = default;

void KalvexWindow::SetApp(app::CKalvexApp& app) {
    m_app = &app;
    m_frames->SetApp(app);
}

std::string KalvexWindow::GetBesideProfile() const {
    return m_app->GetProfileBase() + (m_app->IsConsoleClient() ? "_rc" : "");
}

// What lies beside the profile can be named when the application has chosen it.
LookSettings& KalvexWindow::Look() {
    if (!m_look) {
        m_look =
            std::make_unique<LookSettings>(QString::fromStdString(GetBesideProfile() + ".window"));
        m_frames->SetPlaces(*m_look);
    }
    return *m_look;
}

ScriptFiles& KalvexWindow::Files() {
    if (!m_files) {
        m_files = std::make_unique<ScriptFiles>(ScriptFiles::Parts{
            *this, m_translator, m_world.clock, *m_app, *m_frames, Look(),
            [this](BoxKind kind, const QString& text) { return Ask(kind, text); },
            GetBesideProfile() + ".recovery"});
    }
    return *m_files;
}

workbench::SourceVariables& KalvexWindow::Variables() {
    if (!m_variables) {
        m_variables =
            std::make_unique<workbench::SourceVariables>(m_app->ClientInterface()->SourceList());
    }
    return *m_variables;
}

void KalvexWindow::AddToolBars() {
    using workbench::Command;
    QToolBar* const standard = m_actions->AddToolBar(
        "standardBar", platform::Translatable("Pasek standardowy"),
        {Command::New, Command::Open, Command::Save, Command::None, Command::Print, Command::None,
         Command::Cut, Command::Copy, Command::Paste, Command::None, Command::Find, Command::Help});
    QAction* const find = m_actions->Action(Command::Find);
    AddUndoButton(*standard, find, workbench::UndoDirection::Undo);
    AddUndoButton(*standard, find, workbench::UndoDirection::Redo);
    standard->insertSeparator(find);
    m_actions->AddToolBar(
        "scriptBar", platform::Translatable("Pasek skryptu"),
        {Command::Start, Command::Stop, Command::Step, Command::Reset, Command::None,
         Command::ToggleBreakpoint, Command::DeleteBreakpoints, Command::None, Command::Variables,
         Command::LogWindow, Command::InsertVariables, Command::TakeSession});
    m_actions->AddToolBar(
        "editBar", platform::Translatable("Pasek edycji"),
        {Command::Indent, Command::Unindent, Command::None, Command::ToggleBookmark,
         Command::NextBookmark, Command::PreviousBookmark, Command::DeleteBookmarks});
    m_actions->AddToolBar("logBar", platform::Translatable("Pasek rejestracji"),
                          {Command::LevelErrors, Command::LevelEvents, Command::LevelTransmission,
                           Command::None, Command::ClearLog, Command::AutoScroll});
    QMenu& view = m_actions->Menu("Widok");
    QAction* const place = m_actions->Action(Command::Toolbars);
    for (QToolBar* bar : findChildren<QToolBar*>())
        view.insertAction(place, bar->toggleViewAction());
}

void KalvexWindow::AddUndoButton(QToolBar& bar, QAction* before,
                                 workbench::UndoDirection direction) {
    const bool undoes = direction == workbench::UndoDirection::Undo;
    CUndoButton::Source source;
    source.actions = [this, direction] {
        const CKalvexEditCtrl* const editor = ActiveEditor();
        return editor == nullptr ? QStringList() : editor->UndoDescriptions(direction);
    };
    source.carryOut = [this, undoes](int count) {
        CKalvexEditCtrl* const editor = ActiveEditor();
        if (editor == nullptr) return;
        if (undoes) return editor->Undo(count);
        editor->Redo(count);
    };
    auto* const button = new CUndoButton(direction, m_translator, std::move(source), &bar);
    button->setDefaultAction(
        m_actions->Action(undoes ? workbench::Command::Undo : workbench::Command::Redo));
    bar.insertWidget(before, button);
}

void KalvexWindow::AddStatusBar() {
    for (std::size_t i = 0; i < m_status.size(); ++i) {
        m_status[i] = new QLabel(this);
        m_status[i]->setObjectName(QLatin1String(kStatusNames[i]));
        m_status[i]->setTextFormat(Qt::PlainText);
        m_status[i]->setMargin(2);
        statusBar()->addWidget(m_status[i], i == 0 ? 1 : 0);
    }
    m_status[0]->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

// ---- boxes

void KalvexWindow::Do(const std::function<void()>& work) {
    m_world.loop.Turn([this, &work] {
        m_app->Documents().Hold();
        work();
        m_app->Documents().Release();
    });
}

// A message that comes while another box is open waits for nobody: its text is told once.
BoxAnswer KalvexWindow::Ask(BoxKind kind, const QString& text) {
    if (kind == BoxKind::Message && m_boxTexts.contains(text)) return BoxAnswer::Yes;
    const bool holds = m_app->HasDocuments();
    if (holds) m_app->Documents().Hold();
    m_boxTexts.append(text);
    const BoxAnswer answer = ShowBox(isVisible() ? this : nullptr, kind, text);
    m_boxTexts.removeOne(text);
    if (holds) m_app->Documents().Release();
    return answer;
}

bool KalvexWindow::AskYesNo(std::string_view text) {
    return Ask(BoxKind::YesNo, ToQt(text)) == BoxAnswer::Yes;
}

void KalvexWindow::ShowMessage(std::string_view text) {
    Ask(BoxKind::Message, ToQt(text));
}

bool KalvexWindow::ShowCmdLineParamsDlg(std::string_view help) {
    Ask(BoxKind::Table, ToQt(help).trimmed());
    return true;
}

// ---- the frame

bool KalvexWindow::SaveModified() {
    return Files().SaveModified();
}

void KalvexWindow::SetTitle(std::string_view title) {
    setWindowTitle(ToQt(title));
    m_tray.SetTip(ToQt(title));
    for (CChildFrame* frame : m_frames->All()) m_frames->UpdateTitle(frame->Document());
}

// Begins what a person sees: the first of all this is the auto-start done.
void KalvexWindow::Show() {
    if (std::exchange(m_shown, true)) return;
    RestoreLook();
    if (m_app->Configuration().trayIcon) m_tray.SetShown(true);
    show();
    activateWindow();
    m_viewTimer.start(0);
    m_stateTimer.start(kStatePeriod);
    UpdateState();
    QTimer::singleShot(0, this, [this] {
        Do([this] {
            for (const std::string& script : m_app->GetScriptArguments()) {
                Files().Open(QString::fromStdString(script));
            }
            Files().OfferCopies();
        });
    });
}

void KalvexWindow::Hide() {
    if (m_shown) {
        Look().SetMain(saveGeometry(), saveState());
        Look().SetSearches(m_frames->Finds().texts);
        Files().KeepCopies(true);
    }
    m_viewTimer.stop();
    m_stateTimer.stop();
    m_caretTimer.stop();
    m_variables.reset();
    m_tray.SetShown(false);
    delete m_logFrame;  // the log ends with the application
    hide();
}

void KalvexWindow::RestoreLook() {
    restoreGeometry(Look().GetGeometry());
    restoreState(Look().GetState());
    m_editorLook.lineNumbers = Look().IsOn("numery", true);
    m_editorLook.zoom = Look().GetZoom();
    m_scheme = Look().GetScheme();
    m_valuesBeside = Look().IsOn("wartosci", true);
    m_frames->ShowValues(m_valuesBeside);
    statusBar()->setVisible(Look().IsOn("pasek", true));
    m_frames->Finds().texts = Look().GetSearches();
    ApplyScheme();
    FillRecentFiles();
}

void KalvexWindow::SetStatusLine(std::string_view text) {
    const app::CLog& log = m_app->Log();
    m_statusLine = log.GetCount() == 0 ? ToQt(text) : ToQt(log.GetText(log.GetCount() - 1));
    if (m_statusTip.isEmpty()) m_status[0]->setText(m_statusLine);
}

// The rule of the entry asks for the same right.
void KalvexWindow::EnableCloseEntry(bool) {
    UpdateCommands();
}

void KalvexWindow::ModifyTrayIcon(bool error, std::string_view title, std::string_view text) {
    m_tray.SetError(error, ToQt(title), ToQt(text));
}

void KalvexWindow::UpdateToolBar() {
    UpdateCommands();
}

void KalvexWindow::MinimiseFrame(engine::CKalvexDoc& document) {
    m_frames->FrameOf(document).showMinimized();
}

void KalvexWindow::RefreshVariables(engine::CKalvexDoc& document) {
    m_frames->RefreshVariables(document);
}

void KalvexWindow::OnScriptOpened(engine::CKalvexDoc& document) {
    Files().OnOpened(document);
    m_frames->Add(document);
}

void KalvexWindow::OnScriptClosing(engine::CKalvexDoc& document) {
    Files().OnClosing(document);
    CloseTrends(document);
    delete m_insertDialogs[&document];
    m_insertDialogs.erase(&document);
    m_insertMemories.erase(&document);
    m_frames->Remove(document);
}

// ---- events

void KalvexWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    QuitProgram();
}

void KalvexWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (!m_shown) return;
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        QTimer::singleShot(0, this, [this] { Do([this] { Files().CheckFiles(); }); });
    }
    if (event->type() != QEvent::WindowStateChange || !isMinimized()) return;
    const bool shown = m_app->Configuration().trayIcon;
    if (m_tray.SetShown(shown) && shown) QTimer::singleShot(0, this, [this] { hide(); });
}

// The tip of an entry stands in the pane of the messages for as long as it is pointed at.
bool KalvexWindow::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip) return QMainWindow::event(event);
    m_statusTip = static_cast<QStatusTipEvent*>(event)->tip();
    m_status[0]->setText(m_statusTip.isEmpty() ? m_statusLine : m_statusTip);
    return true;
}

void KalvexWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void KalvexWindow::dropEvent(QDropEvent* event) {
    OpenDropped(event->mimeData()->urls());
    event->acceptProposedAction();
}

void KalvexWindow::RestoreWindow() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void KalvexWindow::QuitProgram() {
    Do([this] { m_app->OnCloseMainWindow(); });
}

void KalvexWindow::OnTrayActivated() {
    const bool isSeen = isVisible() && !isMinimized();
    if (isSeen && isActiveWindow()) {
        showMinimized();
    } else {
        RestoreWindow();
    }
}

}  // namespace kalvex::window
