// What the commands of the main window do.
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QFontDialog>
#include <QMdiSubWindow>
#include <QMenu>
#include <QStatusBar>
#include <QUrl>
#include <algorithm>
#include <iterator>

#include "app/CmdLine.h"
#include "app/NameReplacement.h"
#include "engine/ErrorReport.h"
#include "text/TextFormat.h"
#include "workbench/qt/ConfigurationDialog.h"
#include "workbench/qt/Documents.h"
#include "workbench/qt/FramePlacing.h"
#include "workbench/qt/InsertVariablesDialog.h"
#include "workbench/qt/KalvexWindow.h"
#include "workbench/qt/LineDialog.h"
#include "workbench/qt/LoginDialog.h"
#include "workbench/qt/PatternFindDialog.h"
#include "workbench/qt/RenamingDialogs.h"
#include "workbench/qt/SourcesDialog.h"
#include "workbench/qt/TextDialog.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

using workbench::Command;

struct KalvexWindow::CommandHandler {
    Command command;
    void (*run)(KalvexWindow& window);
};

namespace {

// Of the active editor; nothing without one.
struct EditorCommandRow {
    Command command;
    void (*run)(CKalvexEditCtrl& editor);
};

constexpr EditorCommandRow kEditorCommands[] = {
    {Command::Undo, [](CKalvexEditCtrl& e) { e.Undo(); }},
    {Command::Redo, [](CKalvexEditCtrl& e) { e.Redo(); }},
    {Command::Cut, [](CKalvexEditCtrl& e) { e.Cut(); }},
    {Command::Paste, [](CKalvexEditCtrl& e) { e.Paste(); }},
    {Command::Delete, [](CKalvexEditCtrl& e) { e.Delete(); }},
    {Command::SelectAll, [](CKalvexEditCtrl& e) { e.SelectAll(); }},
    {Command::ToggleBookmark, [](CKalvexEditCtrl& e) { e.ToggleBookmark(); }},
    {Command::NextBookmark, [](CKalvexEditCtrl& e) { e.GoToBookmark(true); }},
    {Command::PreviousBookmark, [](CKalvexEditCtrl& e) { e.GoToBookmark(false); }},
    {Command::DeleteBookmarks, [](CKalvexEditCtrl& e) { e.DeleteBookmarks(); }},
    {Command::OutlineCreate, [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::Create); }},
    {Command::OutlineRemove, [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::Remove); }},
    {Command::OutlineToggle, [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::Toggle); }},
    {Command::OutlineToggleAll, [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::ToggleAll); }},
    {Command::OutlineCollapse,
     [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::CollapseToDefinitions); }},
    {Command::OutlineHide, [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::Stop); }},
    {Command::OutlineShow, [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::Show); }},
    {Command::OutlineAutomatic, [](CKalvexEditCtrl& e) { e.Outline(OutlineCommand::Automatic); }},
    {Command::Indent, [](CKalvexEditCtrl& e) { e.Indent(); }},
    {Command::Unindent, [](CKalvexEditCtrl& e) { e.Unindent(); }},
    {Command::ToggleComment, [](CKalvexEditCtrl& e) { e.ToggleComment(); }},
    {Command::MoveLinesUp, [](CKalvexEditCtrl& e) { e.MoveLines(false); }},
    {Command::MoveLinesDown, [](CKalvexEditCtrl& e) { e.MoveLines(true); }},
    {Command::KeywordList, [](CKalvexEditCtrl& e) { e.ShowCompletion(); }},
    {Command::ZoomIn, [](CKalvexEditCtrl& e) { e.zoomIn(); }},
    {Command::ZoomOut, [](CKalvexEditCtrl& e) { e.zoomOut(); }},
    {Command::ZoomReset, [](CKalvexEditCtrl& e) { e.zoomTo(0); }},
};

}  // namespace

const KalvexWindow::CommandHandler KalvexWindow::kHandlers[] = {
    {Command::New, [](KalvexWindow& w) { w.Files().New(); }},
    {Command::Open, [](KalvexWindow& w) { w.Files().OpenByDialog(); }},
    {Command::Close, [](KalvexWindow& w) { w.m_area->closeActiveSubWindow(); }},
    {Command::Save, [](KalvexWindow& w) { w.Files().Save(*w.ActiveScript()); }},
    {Command::SaveAs, [](KalvexWindow& w) { w.Files().SaveAs(*w.ActiveScript()); }},
    {Command::History, [](KalvexWindow& w) { w.Files().ShowHistory(*w.ActiveScript()); }},
    {Command::Print, [](KalvexWindow& w) { PrintWithDialog(w.PrintedEditor(), w.Printer(), &w); }},
    {Command::PrintPreview,
     [](KalvexWindow& w) { ShowPrintPreview(w.PrintedEditor(), w.Printer(), &w); }},
    {Command::PrintSetup, [](KalvexWindow& w) { ShowPageSetup(w.Printer(), &w); }},
    {Command::Quit, [](KalvexWindow& w) { w.m_app->OnCloseMainWindow(); }},
    {Command::Copy, [](KalvexWindow& w) { w.CopySelection(); }},
    {Command::Find, [](KalvexWindow& w) { w.Find(); }},
    {Command::FindNext, [](KalvexWindow& w) { w.FindNext(); }},
    {Command::FindPrevious, [](KalvexWindow& w) { w.ActiveBar().Find(false); }},
    {Command::Replace, [](KalvexWindow& w) { w.ActiveBar().Open(true); }},
    {Command::GoToLine, [](KalvexWindow& w) { w.GoToLine(); }},
    {Command::Variables, [](KalvexWindow& w) { w.ToggleVariables(); }},
    {Command::LogWindow, [](KalvexWindow& w) { w.ShowLog(); }},
    {Command::Standing, [](KalvexWindow& w) { w.ToggleStanding(); }},
    {Command::ValuesBeside, [](KalvexWindow& w) { w.ToggleValuesBeside(); }},
    {Command::LineNumbers, [](KalvexWindow& w) { w.ToggleLineNumbers(); }},
    {Command::Font, [](KalvexWindow& w) { w.ChooseFont(); }},
    {Command::SchemeLight, [](KalvexWindow& w) { w.ChooseScheme(Scheme::Light); }},
    {Command::SchemeDark, [](KalvexWindow& w) { w.ChooseScheme(Scheme::Dark); }},
    {Command::SchemeDesktop, [](KalvexWindow& w) { w.ChooseScheme(Scheme::Desktop); }},
    {Command::StatusBar, [](KalvexWindow& w) { w.ToggleStatusBar(); }},
    {Command::Start, [](KalvexWindow& w) { w.StartScript(); }},
    {Command::Stop, [](KalvexWindow& w) { w.ActiveScript()->Stop(); }},
    {Command::Step, [](KalvexWindow& w) { w.ActiveScript()->Step(); }},
    {Command::Reset, [](KalvexWindow& w) { w.ResetScript(); }},
    {Command::ToggleBreakpoint, [](KalvexWindow& w) { w.ToggleBreakpoint(); }},
    {Command::DeleteBreakpoints, [](KalvexWindow& w) { w.DeleteBreakpoints(); }},
    {Command::InsertVariables, [](KalvexWindow& w) { w.InsertVariables(); }},
    {Command::ForgetVariables, [](KalvexWindow& w) { w.Variables().MarkReload(); }},
    {Command::TakeSession, [](KalvexWindow& w) { w.m_app->AskForSession(*w.ActiveScript()); }},
    {Command::ScheduleProof, [](KalvexWindow& w) { w.ShowSchedule(); }},
    {Command::Trend, [](KalvexWindow& w) { w.ShowTrend(); }},
    {Command::LevelErrors, [](KalvexWindow& w) { w.m_app->SetLogLevel(platform::LogErrors); }},
    {Command::LevelEvents, [](KalvexWindow& w) { w.m_app->SetLogLevel(platform::LogEvents); }},
    {Command::LevelTransmission,
     [](KalvexWindow& w) { w.m_app->SetLogLevel(platform::LogTransmission); }},
    {Command::ClearLog, [](KalvexWindow& w) { w.m_app->Log().OnClear(); }},
    {Command::AutoScroll, [](KalvexWindow& w) { w.ToggleAutoScroll(); }},
    {Command::Configuration, [](KalvexWindow& w) { w.Configure(); }},
    {Command::Sources, [](KalvexWindow& w) { w.EditSources(); }},
    {Command::RenameVariables, [](KalvexWindow& w) { w.RenameVariables(); }},
    {Command::LogIn, [](KalvexWindow& w) { w.LogIn(); }},
    {Command::LogOut, [](KalvexWindow& w) { w.LogOut(); }},
    {Command::NextWindow, [](KalvexWindow& w) { w.m_area->activateNextSubWindow(); }},
    {Command::PreviousWindow, [](KalvexWindow& w) { w.m_area->activatePreviousSubWindow(); }},
    {Command::Cascade, [](KalvexWindow& w) { w.m_area->cascadeSubWindows(); }},
    {Command::Tile, [](KalvexWindow& w) { w.m_area->tileSubWindows(); }},
    {Command::Maximise, [](KalvexWindow& w) { w.m_area->activeSubWindow()->showMaximized(); }},
    {Command::Minimise, [](KalvexWindow& w) { w.m_area->activeSubWindow()->showMinimized(); }},
    {Command::Restore, [](KalvexWindow& w) { w.m_area->activeSubWindow()->showNormal(); }},
    {Command::Help, [](KalvexWindow& w) { w.ShowHelp(); }},
    {Command::Parameters,
     [](KalvexWindow& w) { w.ShowCmdLineParamsDlg(app::CCmdLine::GetHelp(w.m_translator)); }},
    {Command::About,
     [](KalvexWindow& w) { AboutBox(QStringLiteral(KALVEX_VERSION), w.m_translator, &w).exec(); }},
};

bool KalvexWindow::HasHandler(Command command) {
    return std::ranges::find(kHandlers, command, &CommandHandler::command) != std::end(kHandlers) ||
           std::ranges::find(kEditorCommands, command, &EditorCommandRow::command) !=
               std::end(kEditorCommands);
}

void KalvexWindow::Run(Command command) {
    Do([this, command] {
        const workbench::CommandState state = GetCommandState();
        if (!workbench::RowOf(command).enabled(state)) return;
        const auto handler = std::ranges::find(kHandlers, command, &CommandHandler::command);
        if (handler != std::end(kHandlers)) return handler->run(*this);
        const auto row = std::ranges::find(kEditorCommands, command, &EditorCommandRow::command);
        if (row != std::end(kEditorCommands)) row->run(*ActiveEditor());
    });
    UpdateCommands();
}

// ---- scripts

void KalvexWindow::StartScript() {
    engine::CKalvexDoc& document = *ActiveScript();
    if (!Files().PrepareStart(document)) return;
    const bool wasModified = document.IsModified();
    document.Start();
    if (!m_app->Documents().IsOpen(document)) return;
    if (wasModified && !document.IsModified()) return Files().OnSaved(document);
    if (!document.IsModified()) Files().OnInStep(document);
}

void KalvexWindow::ResetScript() {
    engine::CKalvexDoc& document = *ActiveScript();
    document.Reset();
    Files().OnInStep(document);
}

void KalvexWindow::ToggleBreakpoint() {
    ToggleBreakpointAt(*ActiveScript(), ActiveEditor()->CaretLine());
}

void KalvexWindow::ToggleBreakpointAt(engine::CKalvexDoc& document, int line) {
    if (!workbench::RowOf(Command::ToggleBreakpoint).enabled(GetCommandState())) return;
    if (m_app->IsConsoleClient()) return m_app->RemoteModule().ToggleBreakpoint(document, line);
    workbench::DocumentModel& model = m_app->Documents().ModelOf(document);
    model.Markers().SetBreakpoint(line, !model.HasBreakpoint(line));
    m_frames->ApplyAll();
}

void KalvexWindow::DeleteBreakpoints() {
    engine::CKalvexDoc& document = *ActiveScript();
    if (m_app->IsConsoleClient()) return m_app->RemoteModule().RemoveBreakpoints(document);
    m_app->Documents().ModelOf(document).Markers().DeleteAllMarkers(
        workbench::MarkerBreakpoint | workbench::MarkerBreakpointColour);
    m_frames->ApplyAll();
}

void KalvexWindow::ToggleVariables() {
    engine::CKalvexDoc& document = *ActiveScript();
    if (ActiveVariables() != nullptr) return m_frames->Activate(document);
    m_frames->ShowVariables(document);
}

void KalvexWindow::InsertVariables() {
    engine::CKalvexDoc* const document = ActiveScript();
    std::vector<std::string> sources;
    for (const sources::CSourceDesc& source : m_app->Configuration().sources) {
        if (!source.name.empty()) sources.push_back(source.name);
    }
    CKalvexEditCtrl& editor = *ActiveEditor();
    QPointer<QDialog>& open = m_insertDialogs[document];
    if (open == nullptr) {
        open = new CInsertVarsDlg(
            {m_translator, Variables(), std::move(sources), m_insertMemories[document],
             [this](std::string_view text) { ShowMessage(text); },
             [&editor](const std::vector<std::string>& lines) {
                 std::string text;
                 for (const std::string& line : lines) text += line;
                 editor.InsertAtTop(ToQt(text));
             }},
            &editor);
        open->show();
    }
    open->raise();
    open->activateWindow();
}

void KalvexWindow::OpenDropped(const QList<QUrl>& files) {
    QStringList paths;
    for (const QUrl& file : files) {
        const QFileInfo info(file.toLocalFile());
        if (!info.isDir()) {
            paths.append(info.filePath());
            continue;
        }
        for (const QFileInfo& script : QDir(info.filePath())
                                           .entryInfoList({QStringLiteral("*.kx")}, QDir::Files,
                                                          QDir::Name | QDir::IgnoreCase)) {
            paths.append(script.filePath());
        }
    }
    QTimer::singleShot(0, this, [this, paths] { Do([this, &paths] { Files().OpenAll(paths); }); });
}

// ---- text

void KalvexWindow::CopySelection() {
    if (IsLogActive()) return m_log->Copy();
    ActiveEditor()->Copy();
}

FindBar& KalvexWindow::ActiveBar() {
    return m_frames->FrameOf(*ActiveScript()).Bar();
}

void KalvexWindow::Find() {
    if (CVariablesView* variables = ActiveVariables()) return variables->Find();
    ActiveBar().Open(false);
}

void KalvexWindow::FindNext() {
    if (CVariablesView* variables = ActiveVariables()) return variables->FindNext();
    ActiveBar().Find(true);
}

// The script need not be the active window, nor have been seen.
CKalvexEditCtrl& KalvexWindow::PrintedEditor() {
    return m_frames->FrameOf(*ActiveScript()).NeedEditor();
}

ScriptPrinter& KalvexWindow::Printer() {
    const engine::CKalvexDoc* const document = ActiveScript();
    const QString path = document == nullptr               ? QString()
                         : document->GetPathName().empty() ? m_frames->BaseTitle(*document)
                                                           : ToQt(document->GetPathName());
    if (!m_printer) m_printer = std::make_unique<ScriptPrinter>(path, m_translator);
    m_printer->SetPath(path);
    return *m_printer;
}

void KalvexWindow::GoToLine() {
    CKalvexEditCtrl& editor = *ActiveEditor();
    const std::optional<int> line =
        CLineDlg::Ask(Translated(m_translator, platform::Translatable("Przejdź do linii")),
                      m_translator, editor.CaretLine() + 1, this);
    if (line && ActiveEditor() == &editor) editor.GoToLine(std::max(*line, 1) - 1);
}

// ---- look

void KalvexWindow::ChooseFont() {
    const auto choose = [this](const QFont& font) {
        bool chosen = false;
        const QFont answer = QFontDialog::getFont(&chosen, font, this);
        return chosen ? std::optional(answer) : std::nullopt;
    };
    if (IsLogActive()) {
        const std::optional<QFont> font = choose(m_log->GetLogFont());
        if (!font || m_log == nullptr) return;
        m_log->SetLogFont(*font);
        m_app->KeepLogFont(m_log->GetFontText());
    } else if (QPointer<CVariablesView> variables = ActiveVariables()) {
        const std::optional<QFont> font = choose(variables->GetTableFont());
        if (font && variables != nullptr) variables->SetTableFont(*font);
    } else if (QPointer<CKalvexEditCtrl> editor = ActiveEditor()) {
        const std::optional<QFont> font = choose(editor->EditorFont());
        if (font && editor != nullptr) editor->SetEditorFont(*font);
    }
}

void KalvexWindow::ChooseScheme(Scheme scheme) {
    m_scheme = scheme;
    Look().SetScheme(scheme);
    ApplyScheme();
}

void KalvexWindow::ToggleLineNumbers() {
    m_editorLook.lineNumbers = !m_editorLook.lineNumbers;
    Look().SetOn("numery", m_editorLook.lineNumbers);
    m_frames->SetLook(m_editorLook);
}

void KalvexWindow::ToggleStatusBar() {
    const bool shown = !statusBar()->isVisible();
    statusBar()->setVisible(shown);
    Look().SetOn("pasek", shown);
}

void KalvexWindow::ToggleAutoScroll() {
    m_autoScroll = !m_autoScroll;
    if (m_log != nullptr) m_log->SetAutoScroll(m_autoScroll);
}

// ---- the log

void KalvexWindow::ShowLog() {
    if (m_logFrame == nullptr) {
        auto log = std::make_unique<CKalvexLogView>(
            m_app->Log(), [this](const std::string& line, std::size_t selectedRows) {
                const workbench::LogReference reference = workbench::FindScript(
                    line, selectedRows, m_translator.Translate(engine::kLineMark));
                Do([this, &reference] { ShowReference(reference); });
            });
        log->SetAutoScroll(m_autoScroll);
        log->SetFontText(m_app->ReadLogFont());
        m_log = log.get();
        m_logFrame = AddFrame(*m_area, std::move(log), QStringLiteral("LOG"), {900, 240},
                              Qt::AlignLeft | Qt::AlignBottom);
        m_logFrame->setObjectName(QStringLiteral("logWindow"));
    }
    if (m_logFrame->isMinimized()) m_logFrame->showNormal();
    m_area->setActiveSubWindow(m_logFrame);
    m_log->setFocus();
}

void KalvexWindow::ShowReference(const workbench::LogReference& reference) {
    for (const auto& document : m_app->Documents().All()) {
        if (document->GetPathName() != reference.path) continue;
        m_frames->Activate(*document);
        CKalvexEditCtrl& editor = m_frames->FrameOf(*document).NeedEditor();
        if (reference.line) editor.GoToLine(*reference.line);
        return;
    }
}

// ---- the program

void KalvexWindow::Configure() {
    CCfgDlg::Parts parts{*this, m_translator, m_app->GetWorkingDir(),
                         [this] {
                             std::vector<platform::UserRecord> users;
                             std::string error;
                             m_world.userStore.List(users, error);
                             return users;
                         },
                         [this](QWidget* parent) { return AskWhatToFind(parent); }};
    CCfgDlg dialog(m_app->Configuration(), std::move(parts), this);
    if (dialog.exec() != QDialog::Accepted) return;
    m_app->Configure(dialog.GetConfiguration());
    m_tray.SetShown(m_app->Configuration().trayIcon);
}

std::optional<workbench::FindRequest> KalvexWindow::AskWhatToFind(QWidget* parent) {
    std::optional<workbench::FindRequest> request;
    auto* const dialog = new CFindDlg(
        m_translator, {},
        [&request](const workbench::FindRequest& accepted) { request = accepted; }, parent);
    dialog->exec();
    return request;
}

void KalvexWindow::EditSources() {
    SourcesDialog dialog(m_app->Configuration().sources, m_world.crypt, *this, m_translator, this);
    if (dialog.exec() != QDialog::Accepted) return;
    const bool written = m_app->EditSources([&dialog](std::vector<sources::CSourceDesc>& sources) {
        sources = dialog.GetSources();
        return true;
    });
    if (!written) {
        ShowMessage(m_translator.Translate("Nie można zapisać listy źródeł do profilu"));
    }
}

bool KalvexWindow::Login() {
    LoginDialog dialog(
        [this](const std::string& name, const std::string& password) {
            return m_world.users.RegisterUser(name, password);
        },
        *this, m_translator, isVisible() ? this : nullptr);
    return dialog.exec() == QDialog::Accepted;
}

void KalvexWindow::LogIn() {
    if (!Login()) return;
    m_app->OnUserBroadcast(0, text::FormatText(m_translator.Translate("Zalogowano użytkownika %s"),
                                               {m_world.users.GetActiveUserName()}));
}

void KalvexWindow::LogOut() {
    const std::string name = m_world.users.GetActiveUserName();
    m_world.users.Logout();
    m_app->OnUserBroadcast(
        0, text::FormatText(m_translator.Translate("Wylogowano użytkownika %s"), {name}));
}

void KalvexWindow::RenameVariables() {
    RenamingDialogs desk(*m_app, m_translator, *this);
    app::NameReplacement({m_world.clock, m_translator, m_app->Log(), *this, desk,
                          m_app->GetLogBase().substr(0, m_app->GetLogBase().rfind('/'))})
        .Run();
}

void KalvexWindow::ShowHelp() {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(LanguageManual())));
}

}  // namespace kalvex::window
