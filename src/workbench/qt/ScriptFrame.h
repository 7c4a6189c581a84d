// A script's window in the area of the main one: its editor, which is made when it is first to be
// seen, and below it the bar to find with. Main thread.
#pragma once

#include <QElapsedTimer>
#include <QFont>
#include <QMdiSubWindow>
#include <QStringList>
#include <functional>
#include <optional>
#include <string>

#include "engine/ScriptDocument.h"
#include "workbench/model/DocumentModel.h"
#include "workbench/model/ValuesBeside.h"
#include "workbench/qt/FindBar.h"
#include "workbench/qt/LookSettings.h"
#include "workbench/qt/ScriptEditor.h"

class QVBoxLayout;

namespace kalvex::window {

// What all editors have in common.
struct EditorLook {
    bool dark = false;
    bool lineNumbers = true;
    int zoom = 0;
};

struct FrameCalls {
    std::function<void()> close;  // the person wants it to be closed
    std::function<void(bool minimised)> minimised;
    EditorCalls editor;
};

class CChildFrame final : public QMdiSubWindow {
  public:
    // The document and its model outlive the editor, everything else the frame.
    CChildFrame(engine::CKalvexDoc& document, workbench::DocumentModel& model,
                const platform::Translator& translator, EditorRole role, FindMemory& finds,
                FrameCalls calls);

    engine::CKalvexDoc& Document() { return m_document; }
    workbench::DocumentModel& Model() { return m_model; }
    // Null until it has been needed.
    CKalvexEditCtrl* Editor() { return m_editor; }
    CKalvexEditCtrl& NeedEditor();
    FindBar& Bar();
    // The document goes before the frame does.
    void DropEditor();

    // The title without and with what the script does, and the name of the editor for a reader of
    // the screen.
    void SetTitle(const QString& title, const QString& editorName);
    void SetLook(const EditorLook& look);

    // Whether its text can be seen.
    bool IsSeen() const;
    // Brings what is seen in line with the document.
    void Apply();
    // The same where there is something new; with the values of the variables beside the lines that
    // can be seen, a few times a second while the script is in a run. Whether there was.
    bool ApplyIfNew(bool withValues);

    FramePlace GetPlace() const;
    void SetPlace(const FramePlace& place);

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    engine::CKalvexDoc& m_document;
    workbench::DocumentModel& m_model;
    const platform::Translator& m_translator;
    const EditorRole m_role;
    FindMemory& m_finds;
    bool ApplyValues(bool withValues);

    const FrameCalls m_calls;
    EditorLook m_look;
    QString m_editorName;
    QWidget* m_content = nullptr;
    QVBoxLayout* m_layout = nullptr;
    CKalvexEditCtrl* m_editor = nullptr;
    FindBar* m_bar = nullptr;
    workbench::LineValues m_values;
    QElapsedTimer m_valuesShown;  // not begun without values
    unsigned m_revision = 0;
    bool m_minimised = false;
};

}  // namespace kalvex::window
