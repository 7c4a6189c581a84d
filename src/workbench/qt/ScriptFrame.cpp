#include "workbench/qt/ScriptFrame.h"

#include <QCloseEvent>
#include <QVBoxLayout>
#include <utility>

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr int kValuesPause = 500;  // milliseconds

}  // namespace

CChildFrame::CChildFrame(engine::CKalvexDoc& document, workbench::DocumentModel& model,
                         const platform::Translator& translator, EditorRole role, FindMemory& finds,
                         FrameCalls calls)
    : m_document(document),
      m_model(model),
      m_translator(translator),
      m_role(role),
      m_finds(finds),
      m_calls(std::move(calls)) {
    setObjectName(QStringLiteral("scriptWindow"));
    m_content = new QWidget(this);
    m_layout = new QVBoxLayout(m_content);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    setWidget(m_content);
}

CKalvexEditCtrl& CChildFrame::NeedEditor() {
    if (m_editor != nullptr) return *m_editor;
    m_editor =
        new CKalvexEditCtrl(m_document, m_model, m_translator, m_role, m_calls.editor, m_content);
    m_editor->setObjectName(QStringLiteral("scriptEditor"));
    m_bar = new FindBar(*m_editor, m_finds, m_translator, m_calls.editor.showMessage, m_content);
    m_layout->addWidget(m_editor, 1);
    m_layout->addWidget(m_bar);
    m_content->setFocusProxy(m_editor);
    SetLook(m_look);
    m_editor->setAccessibleName(m_editorName);
    m_editor->ApplyView();
    return *m_editor;
}

FindBar& CChildFrame::Bar() {
    NeedEditor();
    return *m_bar;
}

void CChildFrame::DropEditor() {
    delete m_bar;
    delete m_editor;
    m_bar = nullptr;
    m_editor = nullptr;
}

void CChildFrame::SetTitle(const QString& title, const QString& editorName) {
    m_editorName = editorName;
    setWindowTitle(title + QStringLiteral("[*]"));
    setWindowModified(m_document.IsModified());
    if (m_editor != nullptr) m_editor->setAccessibleName(editorName);
}

void CChildFrame::SetLook(const EditorLook& look) {
    m_look = look;
    if (m_editor == nullptr) return;
    m_editor->SetScheme(look.dark);
    m_editor->ShowLineNumbers(look.lineNumbers);
    m_editor->zoomTo(look.zoom);
}

bool CChildFrame::IsSeen() const {
    return isVisible() && !m_minimised;
}

void CChildFrame::Apply() {
    m_revision = m_model.GetRevision();
    NeedEditor().ApplyView();
    m_valuesShown.invalidate();
}

bool CChildFrame::ApplyIfNew(bool withValues) {
    const unsigned revision = m_model.GetRevision();
    const bool isNew = std::exchange(m_revision, revision) != revision;
    if (isNew) NeedEditor().ApplyView();
    return ApplyValues(withValues) || isNew;
}

bool CChildFrame::ApplyValues(bool withValues) {
    const engine::RunState& state = m_document.State();
    if (m_editor == nullptr) return false;
    if (!withValues || (!state.m_bRunning && !state.m_bPaused)) {
        m_editor->ClearLineNotes();
        m_valuesShown.invalidate();
        return false;
    }
    if (m_valuesShown.isValid() && m_valuesShown.elapsed() < kValuesPause) return false;
    m_valuesShown.start();
    for (const int line : m_editor->SeenLines()) {
        m_editor->SetLineNote(line, ToQt(m_values.Beside(m_document, line)));
    }
    return true;
}

FramePlace CChildFrame::GetPlace() const {
    return {isMaximized() || isMinimized() ? QRect() : geometry(), isMaximized()};
}

void CChildFrame::SetPlace(const FramePlace& place) {
    if (place.rectangle.isValid()) setGeometry(place.rectangle);
    if (place.maximised) setWindowState(windowState() | Qt::WindowMaximized);
}

// Who closes is asked first, and the frame goes with its document.
void CChildFrame::closeEvent(QCloseEvent* event) {
    event->ignore();
    m_calls.close();
}

void CChildFrame::changeEvent(QEvent* event) {
    QMdiSubWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || isMinimized() == m_minimised) return;
    m_minimised = isMinimized();
    if (!m_minimised) NeedEditor();
    m_calls.minimised(m_minimised);
}

}  // namespace kalvex::window
