#include "workbench/qt/ScriptEditor.h"

#include <QTimer>
#include <algorithm>
#include <utility>

#include "workbench/model/EditorLines.h"
#include "workbench/qt/EditScope.h"
#include "workbench/qt/EditorMargins.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kReadOnly = platform::Translatable("Edycja dokumentu nie jest możliwa!");

struct MarkRow {
    workbench::Marker marker;
    EditorMark mark;
};

constexpr MarkRow kMarks[] = {
    {workbench::MarkerBreakpointColour, MarkBreakpointLine},
    {workbench::MarkerBookmark, MarkBookmark},
    {workbench::MarkerBreakpoint, MarkBreakpoint},
    {workbench::MarkerCurrentLine, MarkCurrentLine},
};

constexpr int kLinesAbove = 4;  // of the window's lines every so many stand above a line of the run

}  // namespace

CKalvexEditCtrl::EditScope::EditScope(CKalvexEditCtrl& editor, unsigned code, Grouping grouping)
    : m_editor(editor), m_outer(editor.m_code), m_group(grouping == Grouping::Own) {
    // An empty group keeps edits of another kind from joining those before.
    const bool parts = grouping == Grouping::Kind && !m_outer && code != editor.m_lastCode;
    editor.m_code = code;
    if (m_group || parts) editor.Ask(SCI_BEGINUNDOACTION);
    if (parts) editor.Ask(SCI_ENDUNDOACTION);
}

CKalvexEditCtrl::EditScope::~EditScope() {
    if (m_group) m_editor.Ask(SCI_ENDUNDOACTION);
    m_editor.m_code = m_outer;
}

CKalvexEditCtrl::CKalvexEditCtrl(engine::CKalvexDoc& document, workbench::DocumentModel& model,
                                 const platform::Translator& translator, EditorRole role,
                                 EditorCalls calls, QWidget* parent)
    : QsciScintilla(parent),
      m_document(document),
      m_model(model),
      m_text(*model.Text()),
      m_translator(translator),
      m_role(role),
      m_calls(std::move(calls)),
      m_help(translator),
      m_list(new CompletionList(this, translator)) {
    setObjectName("scriptEditor");
    SetUp();
    LoadText();
    Connect();
    m_text.SetListener(this);
    if (m_role == EditorRole::Console) {
        m_text.ReportShifts(m_calls.linesInserted, m_calls.linesDeleted);
    }
    m_seenRevision = m_model.GetRevision() - 1;
    m_seenMarkers = m_model.Markers().GetRevision() - 1;
    ApplyView();
}

CKalvexEditCtrl::~CKalvexEditCtrl() {
    m_text.SetListener(nullptr);
    m_text.ReportShifts(nullptr, nullptr);
}

void CKalvexEditCtrl::Connect() {
    connect(this, &QsciScintillaBase::SCN_MODIFIED, this,
            [this](int position, int type, const char*, int, int added, int, int, int, int, int) {
                OnModified(position, type, added);
            });
    connect(this, &QsciScintillaBase::SCN_CHARADDED, this,
            [this](int character) { OnCharacter(character); });
    connect(this, &QsciScintillaBase::SCN_STYLENEEDED, this,
            [this](int position) { StyleTo(position); });
    connect(this, &QsciScintillaBase::SCN_UPDATEUI, this, [this] { MatchBlock(); });
    connect(this, &QsciScintilla::cursorPositionChanged, this, [this] {
        if (m_calls.caretMoved) m_calls.caretMoved();
    });
    connect(this, &QsciScintillaBase::SCN_ZOOM, this, [this] {
        FitLineNumbers();
        if (m_calls.zoomed) m_calls.zoomed(static_cast<int>(Ask(SCI_GETZOOM)));
    });
    connect(this, &QsciScintillaBase::SCN_MARGINCLICK, this,
            [this](int position, int, int margin) { OnMarginClick(position, margin); });
    connect(this, &QsciScintillaBase::SCN_MODIFYATTEMPTRO, this, [this] { RefuseEdit(); });
    connect(this, &QsciScintillaBase::SCN_SAVEPOINTLEFT, this,
            [this] { m_document.SetModified(true); });
    connect(this, &QsciScintillaBase::SCN_SAVEPOINTREACHED, this,
            [this] { m_document.SetModified(false); });
    connect(this, &QsciScintillaBase::SCN_HOTSPOTCLICK, this, [this](int position, int) {
        const Place place = PlaceOf(position);
        const std::string line = BufferLine(place.line);
        const std::string_view link =
            workbench::LinkAt(line, static_cast<std::size_t>(place.column));
        if (m_calls.openLink) {
            m_calls.openLink(QString::fromUtf8(link.data(), static_cast<qsizetype>(link.size())));
        }
    });
}

// ---- text

void CKalvexEditCtrl::LoadText() {
    std::string buffer;
    for (int line = 0; line < m_text.GetLineCount(); ++line) {
        if (line > 0) buffer += '\n';
        buffer += workbench::ToBuffer(m_text.GetLine(line));
    }
    m_applying = true;
    Ask(SCI_SETUNDOCOLLECTION, 0);
    SendScintilla(SCI_ADDTEXT, static_cast<unsigned long>(buffer.size()), buffer.data());
    Ask(SCI_SETUNDOCOLLECTION, 1);
    Ask(SCI_EMPTYUNDOBUFFER);
    Ask(SCI_SETSAVEPOINT);
    Ask(SCI_GOTOPOS, 0);
    m_applying = false;
    BuildOutline();
    FitLineNumbers();
}

void CKalvexEditCtrl::OnModified(int position, int type, int linesAdded) {
    if ((type & (SC_MOD_INSERTTEXT | SC_MOD_DELETETEXT)) == 0 || m_applying) return;
    TakeOverEdit(position, linesAdded);
    RecordEdit(type);
}

void CKalvexEditCtrl::TakeOverEdit(int position, int linesAdded) {
    const int first = LineAt(position);
    const int removed = 1 + std::max(-linesAdded, 0);
    const int added = 1 + std::max(linesAdded, 0);
    std::vector<std::string> lines;
    for (int line = first; line < first + added; ++line) {
        lines.push_back(workbench::FromBuffer(BufferLine(line)));
    }
    m_text.ReplaceLines(first, removed, std::move(lines));
    OutlineChanged(first, removed, added);
    if (linesAdded != 0) FitLineNumbers();
}

void CKalvexEditCtrl::RecordEdit(int type) {
    if ((type & SC_PERFORMED_UNDO) != 0) {
        if ((type & SC_LASTSTEPINUNDOREDO) != 0) m_undo.Undone();
    } else if ((type & SC_PERFORMED_REDO) != 0) {
        if ((type & SC_LASTSTEPINUNDOREDO) != 0) m_undo.Redone();
    } else if ((type & SC_STARTACTION) != 0) {
        const bool inserts = (type & SC_MOD_INSERTTEXT) != 0;
        m_lastCode = m_code.value_or(inserts ? workbench::UndoTyping : workbench::UndoDelete);
        m_undo.Done(m_lastCode);
    }
}

void CKalvexEditCtrl::OnLinesReplaced(const workbench::LinesReplaced& change) {
    const bool hasUndo = !m_undo.IsEmpty(workbench::UndoDirection::Undo) ||
                         !m_undo.IsEmpty(workbench::UndoDirection::Redo);
    if (hasUndo && !m_undoText) {
        m_undoText = Bytes();
        QTimer::singleShot(0, this, [this] { SettleUndo(); });
    }
    const auto moved = [&change](int line) {
        if (line < change.first) return line;
        if (line >= change.first + change.removed && change.linesMove) {
            return line + change.added - change.removed;
        }
        if (!change.linesMove) return line;
        return std::min(line, change.first + std::max(change.added - 1, 0));
    };
    Place caret = PlaceOf(static_cast<int>(Ask(SCI_GETCURRENTPOS)));
    Place anchor = PlaceOf(static_cast<int>(Ask(SCI_GETANCHOR)));
    int top = static_cast<int>(Ask(SCI_DOCLINEFROMVISIBLE, Ask(SCI_GETFIRSTVISIBLELINE)));
    for (int* line : {&caret.line, &anchor.line, &top}) *line = moved(*line);
    for (int& line : m_foldedBefore) line = moved(line);
    if (m_runLine >= 0) Ask(SCI_MARKERDELETE, m_runLine, MarkRunLine);
    m_runLine = -1;
    ReplaceBufferLines(change);
    Ask(SCI_SETANCHOR, PositionOf(anchor));
    Ask(SCI_SETCURRENTPOS, PositionOf(caret));
    OutlineChanged(change.first, change.removed, change.added);
    ApplyLevels();
    Ask(SCI_SETFIRSTVISIBLELINE, Ask(SCI_VISIBLEFROMDOCLINE, top));
    m_seenMarkers = m_model.Markers().GetRevision() - 1;
    m_seenRevision = m_model.GetRevision() - 1;
    FitLineNumbers();
}

void CKalvexEditCtrl::ReplaceBufferLines(const workbench::LinesReplaced& change) {
    const int behind = change.first + change.removed;
    const bool toEnd = behind >= LineCount();
    std::string buffer;
    for (int line = change.first; line < change.first + change.added; ++line) {
        if (toEnd && (change.first > 0 || line > 0)) buffer += '\n';
        buffer += workbench::ToBuffer(m_text.GetLine(line));
        if (!toEnd) buffer += '\n';
    }
    const int from =
        toEnd && change.first > 0 ? LineEnd(change.first - 1) : LineStart(change.first);
    const int to = toEnd ? static_cast<int>(Ask(SCI_GETLENGTH)) : LineStart(behind);
    const bool readOnly = Ask(SCI_GETREADONLY) != 0;
    m_applying = true;
    Ask(SCI_SETREADONLY, 0);
    Ask(SCI_SETUNDOCOLLECTION, 0);
    Ask(SCI_SETTARGETRANGE, from, to);
    SendScintilla(SCI_REPLACETARGET, static_cast<unsigned long>(buffer.size()), buffer.data());
    Ask(SCI_SETUNDOCOLLECTION, 1);
    Ask(SCI_SETREADONLY, readOnly ? 1 : 0);
    m_applying = false;
}

// The undo list stays through a run, which has another text for a while.
void CKalvexEditCtrl::SettleUndo() {
    if (!m_undoText || m_document.IsReadOnly()) return;
    if (*m_undoText != Bytes()) {
        Ask(SCI_EMPTYUNDOBUFFER);
        m_undo.Clear();
        m_lastCode = 0;
    }
    m_undoText.reset();
}

bool CKalvexEditCtrl::RefuseEdit() {
    if (Ask(SCI_GETREADONLY) == 0) return false;
    if (m_refusalQueued || !m_calls.showMessage) return true;
    m_refusalQueued = true;
    QTimer::singleShot(0, this, [this] {
        m_calls.showMessage(Translated(m_translator, kReadOnly));
        m_refusalQueued = false;
    });
    return true;
}

std::optional<ForeignCharacter> CKalvexEditCtrl::FirstOutsideWindows1250() const {
    const QByteArray buffer = Bytes();
    const auto found = workbench::FindForeign(
        std::string_view(buffer.constData(), static_cast<std::size_t>(buffer.size())));
    if (!found) return std::nullopt;
    const Place place = PlaceOf(static_cast<int>(found->offset));
    const std::string line = BufferLine(place.line);
    return ForeignCharacter{place.line,
                            static_cast<int>(QString::fromUtf8(line.data(), place.column).size()),
                            QString::fromUtf8(found->character.data(),
                                              static_cast<qsizetype>(found->character.size()))};
}

// ---- places

QByteArray CKalvexEditCtrl::Bytes(int from, int to) const {
    QByteArray bytes(to - from + 1, '\0');
    SendScintilla(SCI_GETTEXTRANGE, static_cast<long>(from), static_cast<long>(to), bytes.data());
    bytes.chop(1);
    return bytes;
}

QByteArray CKalvexEditCtrl::Bytes() const {
    return Bytes(0, static_cast<int>(Ask(SCI_GETLENGTH)));
}

std::string CKalvexEditCtrl::BufferLine(int line) const {
    return Bytes(LineStart(line), LineEnd(line)).toStdString();
}

int CKalvexEditCtrl::LineStart(int line) const {
    return static_cast<int>(Ask(SCI_POSITIONFROMLINE, line));
}

int CKalvexEditCtrl::LineEnd(int line) const {
    return static_cast<int>(Ask(SCI_GETLINEENDPOSITION, line));
}

int CKalvexEditCtrl::LineAt(int position) const {
    return static_cast<int>(Ask(SCI_LINEFROMPOSITION, position));
}

int CKalvexEditCtrl::LineCount() const {
    return static_cast<int>(Ask(SCI_GETLINECOUNT));
}

CKalvexEditCtrl::Place CKalvexEditCtrl::PlaceOf(int position) const {
    const int line = LineAt(position);
    return {line, position - LineStart(line)};
}

int CKalvexEditCtrl::PositionOf(const Place& place) const {
    if (place.line >= LineCount()) return static_cast<int>(Ask(SCI_GETLENGTH));
    const int line = std::max(place.line, 0);
    return std::min(LineStart(line) + place.column, LineEnd(line));
}

int CKalvexEditCtrl::CaretPosition() const {
    return static_cast<int>(Ask(SCI_GETCURRENTPOS));
}

int CKalvexEditCtrl::CaretLine() const {
    return LineAt(CaretPosition());
}

int CKalvexEditCtrl::CaretColumn() const {
    const int position = CaretPosition();
    return static_cast<int>(QString::fromUtf8(Bytes(LineStart(LineAt(position)), position)).size());
}

void CKalvexEditCtrl::GoToLine(int line, int column) {
    const int target = std::clamp(line, 0, LineCount() - 1);
    const QString text = QString::fromStdString(BufferLine(target));
    Ask(SCI_ENSUREVISIBLE, target);
    Ask(SCI_GOTOPOS, LineStart(target) + text.left(column).toUtf8().size());
}

void CKalvexEditCtrl::Select(int from, int to) {
    Ask(SCI_ENSUREVISIBLE, LineAt(from));
    Ask(SCI_ENSUREVISIBLE, LineAt(to));
    Ask(SCI_SETSEL, from, to);
}

CKalvexEditCtrl::Range CKalvexEditCtrl::Selection() const {
    return {static_cast<int>(Ask(SCI_GETSELECTIONSTART)),
            static_cast<int>(Ask(SCI_GETSELECTIONEND))};
}

bool CKalvexEditCtrl::IsOverwriting() const {
    return Ask(SCI_GETOVERTYPE) != 0;
}

bool CKalvexEditCtrl::HasSelection() const {
    return Ask(SCI_GETSELECTIONEMPTY) == 0;
}

// ---- view

void CKalvexEditCtrl::ApplyView() {
    if (m_document.GetPathName() != m_path) {
        m_path = m_document.GetPathName();
        setAccessibleName(ToQt(m_path));
    }
    if (!m_document.IsModified() && Ask(SCI_GETMODIFY) != 0) Ask(SCI_SETSAVEPOINT);
    ApplyError();
    if (m_model.GetRevision() == m_seenRevision) return;
    m_seenRevision = m_model.GetRevision();
    ApplyReadOnly();
    if (m_model.Markers().GetRevision() != m_seenMarkers) ApplyMarkers();
    ApplyRunLine();
}

void CKalvexEditCtrl::ApplyMarkers() {
    const workbench::ScriptMarkers& markers = m_model.Markers();
    m_seenMarkers = markers.GetRevision();
    for (const MarkRow& row : kMarks) {
        Ask(SCI_MARKERDELETEALL, row.mark);
        for (const int line : markers.LinesOf(row.marker)) Ask(SCI_MARKERADD, line, row.mark);
    }
    const std::vector<int> current = markers.LinesOf(workbench::MarkerCurrentLine);
    const int marked = current.empty() ? -1 : current.back();
    // A stop shows its line also where the person has put the caret elsewhere.
    if (marked != m_markedLine && marked == m_model.GetSelectedLine()) m_selectedLine = -1;
    m_markedLine = marked;
}

void CKalvexEditCtrl::ApplyReadOnly() {
    const bool readOnly = m_document.IsReadOnly();
    const bool was = Ask(SCI_GETREADONLY) != 0;
    if (readOnly != was) {
        if (readOnly) m_foldedBefore = FoldedLines();
        setReadOnly(readOnly);
        ApplyStyles();
        ShowOutline(!readOnly);
    }
    SettleUndo();
}

// The highlight is no selection, which would claim that of the desktop 25 times a second.
void CKalvexEditCtrl::ApplyRunLine() {
    const int selected = m_model.GetSelectedLine();
    const int line = selected < LineCount() ? selected : -1;
    if (m_runLine != line) {
        if (m_runLine >= 0) Ask(SCI_MARKERDELETE, m_runLine, MarkRunLine);
        if (line >= 0) Ask(SCI_MARKERADD, line, MarkRunLine);
        m_runLine = line;
    }
    if (selected == m_selectedLine) return;
    m_selectedLine = selected;
    if (line >= 0) ShowLine(line);
}

void CKalvexEditCtrl::ShowLine(int line) {
    Ask(SCI_ENSUREVISIBLE, line);
    Ask(SCI_SETEMPTYSELECTION, LineStart(line));
    const long row = Ask(SCI_VISIBLEFROMDOCLINE, line);
    const long top = Ask(SCI_GETFIRSTVISIBLELINE);
    const long rows = std::max(Ask(SCI_LINESONSCREEN), 1L);
    if (row < top || row >= top + rows) Ask(SCI_SETFIRSTVISIBLELINE, row - rows / kLinesAbove);
}

void CKalvexEditCtrl::ApplyError() {
    const engine::RunState& state = m_document.State();
    const bool stands = (state.m_bErrorStanding || state.stepFailed) && state.report;
    const int line = stands ? state.report->line : -1;
    if (line == m_errorLine && (!stands || state.report->text == m_errorText)) return;
    Ask(SCI_MARKERDELETEALL, MarkError);
    if (line >= 0) Ask(SCI_MARKERADD, line, MarkError);
    m_errorLine = line;
    m_errorText = stands ? state.report->text : std::string();
}

}  // namespace kalvex::window
