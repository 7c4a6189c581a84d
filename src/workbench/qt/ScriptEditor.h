// The editor of one script: shows its text and what its DocumentModel has recorded. What a person
// edits goes into the text at once, what the document does with the text comes back at once, and
// everything else when ApplyView is called. Main thread; lines and columns count from 0, columns in
// characters; positions are bytes of the buffer, which is UTF-8 with LF.
#pragma once

#include <Qsci/qsciscintilla.h>

#include <QByteArray>
#include <QFont>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/ScriptDocument.h"
#include "platform/Translator.h"
#include "workbench/model/DocumentModel.h"
#include "workbench/model/KeywordHelp.h"
#include "workbench/model/ScriptOutline.h"
#include "workbench/model/UndoActions.h"
#include "workbench/model/WordCompletion.h"
#include "workbench/qt/CompletionList.h"

class QMenu;

namespace kalvex::window {

enum class EditorRole { Module, Console };

// What the editor wants of its window; each may be empty.
struct EditorCalls {
    std::function<void(int line)> toggleBreakpoint;
    std::function<void()> deleteBreakpoints;
    std::function<void()> caretMoved;
    std::function<void(int zoom)> zoomed;
    std::function<void(const QList<QUrl>&)> filesDropped;
    std::function<void(const QString& link)> openLink;
    // Once for a key that is held, and never from within an event of the editor.
    std::function<void(const QString& text)> showMessage;
    // Fills the menu of the text, which is shown only where the script may be edited.
    std::function<void(QMenu& menu)> fillTextMenu;
    // Why the script does not go on; empty where there is nothing to say.
    std::function<QString()> currentLineTip;
    // In a console: lines that the person brings and takes, before the marks move.
    workbench::EditedText::ShiftReport linesInserted;
    workbench::EditedText::ShiftReport linesDeleted;
};

// A character that cannot be saved.
struct ForeignCharacter {
    int line = 0;
    int column = 0;
    QString character;
};

enum class OutlineCommand {  // in the order of their numbers from 44032 on
    Create,                  // an element of the selected lines
    Remove,                  // those made by Create that hold the caret
    Toggle,                  // the innermost element that holds the caret
    ToggleAll,               // unfolds all if one is folded, else folds all
    CollapseToDefinitions,   // folds the procedures and nothing else
    Stop,
    Show,
    Automatic,  // whether the blocks of the language are elements
};

class CKalvexEditCtrl final : public QsciScintilla, private workbench::TextListener {
  public:
    // The document's text is the EditedText of the model. All outlive the editor.
    CKalvexEditCtrl(engine::CKalvexDoc& document, workbench::DocumentModel& model,
                    const platform::Translator& translator, EditorRole role, EditorCalls calls,
                    QWidget* parent = nullptr);
    ~CKalvexEditCtrl() override;

    // Brings marks, line of the run, read-only state, modified flag and name in line with the
    // document; a new script is called what the window calls it.
    // Costs next to nothing where nothing has changed.
    void ApplyView();

    // ---- look
    void SetScheme(bool dark);
    bool IsDark() const { return m_dark; }
    void SetEditorFont(const QFont& font);
    QFont EditorFont() const { return m_font; }
    void ShowLineNumbers(bool shown);
    bool HasLineNumbers() const { return m_lineNumbers; }
    // Grey behind the text of the line; an empty note takes it away.
    void SetLineNote(int line, const QString& note);
    void ClearLineNotes();
    // The lines whose text can be seen, from top to bottom.
    std::vector<int> SeenLines() const;

    // ---- caret
    int CaretLine() const;
    int CaretColumn() const;  // a tab counts as one
    // Without a selection; the line comes into view, unfolded.
    void GoToLine(int line, int column = 0);
    void Select(int from, int to);  // positions; the place comes into view
    struct Range {
        int from;
        int to;
    };
    Range Selection() const;  // positions; both the caret's without one
    int CaretPosition() const;
    bool IsOverwriting() const;
    bool HasSelection() const;

    // ---- edits: each is one undo action, and refused with a message where the script is read-only
    void Cut();
    void Copy();
    void Paste();
    void Delete();
    void SelectAll();
    void Indent();
    void Unindent();
    void ToggleComment();
    void MoveLines(bool down);
    void InsertAtTop(const QString& lines);  // whole lines, with their line ends
    struct Replacement {
        int from = 0;  // positions before any of them
        int to = 0;
        QByteArray text;
    };
    // In the order of their places, none of which overlap. False where the script is read-only.
    bool ReplaceAll(const std::vector<Replacement>& replacements);

    // ---- undo
    void Undo(int count = 1);
    void Redo(int count = 1);
    bool CanDo(workbench::UndoDirection direction) const;
    // The newest first, as a person reads them.
    QStringList UndoDescriptions(workbench::UndoDirection direction) const;

    // ---- marks and outline
    void ToggleBookmark();
    bool GoToBookmark(bool forward);  // round about; false where there is none
    void DeleteBookmarks();
    void Outline(OutlineCommand command);
    bool IsOutlined() const { return m_outlined; }
    bool IsOutlinedByItself() const { return m_automatic; }

    // ---- completion
    // Asks the text, so it is for a menu that opens and a key that is pressed.
    bool CanComplete();
    void ShowCompletion();

    // ---- saving
    // Whoever saves asks first, since the text has "?" in its place.
    std::optional<ForeignCharacter> FirstOutsideWindows1250() const;

    // ---- what the pointer finds at a place of the viewport; empty where nothing
    QString TipAt(const QPoint& place) const;
    std::unique_ptr<QMenu> MenuAt(const QPoint& place);

    // The bytes between two positions.
    QByteArray Bytes(int from, int to) const;
    QByteArray Bytes() const;

  protected:
    bool viewportEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    // What the person does while it lives.
    class EditScope;
    struct ManualBlock {
        int first;
        int last;
    };
    struct Place {
        int line;
        int column;  // bytes
    };

    void OnLinesReplaced(const workbench::LinesReplaced& change) override;

    long Ask(unsigned message, long first = 0, long second = 0) const {
        return SendScintilla(message, static_cast<unsigned long>(first), second);
    }
    void Connect();
    void SetUp();

    // ---- text
    void LoadText();
    void OnModified(int position, int type, int linesAdded);
    void TakeOverEdit(int position, int linesAdded);
    void RecordEdit(int type);
    void ReplaceBufferLines(const workbench::LinesReplaced& change);
    void SettleUndo();
    bool RefuseEdit();
    std::string BufferLine(int line) const;
    int LineStart(int line) const;
    int LineEnd(int line) const;
    int LineAt(int position) const;
    int LineCount() const;
    Place PlaceOf(int position) const;
    int PositionOf(const Place& place) const;
    std::set<int> SelectedLines() const;
    void ChangeLineStarts(unsigned code,
                          const std::function<std::optional<Replacement>(int line)>& change);
    // As one action of the code.
    void Carry(unsigned code, const std::vector<Replacement>& replacements);
    void CarryAtOnce(unsigned code, const std::vector<Replacement>& replacements);
    void KeepMarks(const std::function<void()>& edit);
    void Repeat(workbench::UndoDirection direction, unsigned message, int count);
    void RestoreMarks(int line, const std::vector<workbench::Marker>& marks);

    // ---- view
    void ApplyMarkers();
    void ApplyReadOnly();
    void ApplyRunLine();
    void ApplyError();
    void ShowLine(int line);

    // ---- look
    void ApplyScheme();
    void ApplyStyles();
    void DefineMarkers();
    void FitLineNumbers();
    void StyleTo(int position);
    void MatchBlock();
    void MarkBlockWord(int line);
    void PaintNotes(const QRect& area);

    // ---- outline
    void OutlineChanged(int first, int removed, int added);
    void BuildOutline();
    void ApplyLevels();
    void ToggleFold(int line);
    void FoldAll(bool fold, const std::function<bool(int line)>& wanted);
    QByteArray FoldText(int line) const;
    bool IsHeader(int line) const;
    bool IsFolded(int line) const;
    std::vector<int> FoldedLines() const;
    void ShowOutline(bool shown);
    void CreateElement();
    void RemoveElements();
    int HeaderOfCaret() const;

    // ---- keys and pointer
    bool RunOwnCommand(const QKeyEvent& event);
    void OnMarginClick(int position, int margin);
    int MarginAt(int x) const;
    QString TipOfText(const QPoint& place, int line) const;
    QString HiddenText(int header) const;

    // ---- completion
    void OnCharacter(int character);
    void OfferMembers();
    void Open(const workbench::Offer& offer);
    std::string EngineLineBefore(int position) const;
    workbench::ScriptLines Lines() const;

    engine::CKalvexDoc& m_document;
    workbench::DocumentModel& m_model;
    workbench::EditedText& m_text;
    const platform::Translator& m_translator;
    EditorRole m_role;
    EditorCalls m_calls;
    QFont m_font;
    bool m_dark = false;
    bool m_lineNumbers = true;

    bool m_applying = false;  // the document changes the text, or its text is loaded
    std::optional<unsigned> m_code;
    unsigned m_lastCode = 0;
    workbench::UndoActions m_undo;
    std::optional<QByteArray> m_undoText;  // the text to which the undo list belongs
    bool m_refusalQueued = false;

    unsigned m_seenRevision = 0;
    unsigned m_seenMarkers = 0;
    int m_runLine = -1;       // that carries the highlight
    int m_selectedLine = -1;  // that was shown last
    int m_markedLine = -1;
    int m_errorLine = -1;
    std::string m_errorText;
    std::string m_path;  // by which the editor is called
    std::map<int, QString> m_notes;
    bool m_hasMatch = false;
    workbench::KeywordHelp m_help;
    workbench::WordCompletion m_words;
    std::optional<char> m_typed;  // for which a list may open
    CompletionList* m_list;

    workbench::ScriptOutline m_outline;
    std::vector<ManualBlock> m_manual;
    std::vector<int> m_foldedBefore;  // while the outline is off for a run
    bool m_outlined = true;
    bool m_automatic = true;
    bool m_outlineWaits = false;  // is built anew behind several edits
};

}  // namespace kalvex::window
