// How the editor looks: colours, fonts, margins, the styling of the text.
#include <Qsci/qscicommandset.h>

#include <QApplication>
#include <QFontInfo>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "operands/Keywords.h"
#include "workbench/model/EditorSettings.h"
#include "workbench/model/ScriptStyles.h"
#include "workbench/qt/EditorMargins.h"
#include "workbench/qt/ScriptEditor.h"

namespace kalvex::window {

namespace {

constexpr const char* kFace = "Courier New";
constexpr int kTabWidth = 4;
constexpr int kNumbersWidth = 30;
constexpr int kSymbolsWidth = 18;
constexpr int kCaretWidth = 2;
constexpr int kCaretLineAlpha = 40;
constexpr int kNoteGap = 24;
constexpr int kFirstNamedKey = 0x01000000;
constexpr unsigned kMarkerMask =
    1u << MarkBookmark | 1u << MarkError | 1u << MarkBreakpoint | 1u << MarkCurrentLine;

struct Shade {
    QRgb light;
    QRgb dark;

    QColor Of(bool isDark) const { return QColor(isDark ? dark : light); }
};

constexpr Shade kMarginPaper{0xF0F0F0, 0x2B2B2B};
constexpr Shade kMarginText{0x505050, 0xA8A8A8};
constexpr Shade kCaret{0x000000, 0xFFFFFF};
constexpr Shade kCaretLine{0x4080FF, 0x909090};
constexpr Shade kSelection{0xADD6FF, 0x264F78};
constexpr Shade kNote{0x6A6A6A, 0xA0A0A0};
constexpr Shade kBlock{0x2060C0, 0x80B0FF};

struct MarkLook {
    EditorMark mark;
    int symbol;
    Shade edge;
    Shade fill;
};

const MarkLook kMarkLooks[] = {
    {MarkBreakpointLine, QsciScintillaBase::SC_MARK_BACKGROUND, {}, {0xFF7F7F, 0x5C2626}},
    {MarkRunLine, QsciScintillaBase::SC_MARK_BACKGROUND, {}, {0xFFF0A0, 0x4A4520}},
    {MarkBookmark, QsciScintillaBase::SC_MARK_BOOKMARK, {0x103080, 0x80A8FF}, {0x2060E0, 0x4080FF}},
    {MarkError,
     QsciScintillaBase::SC_MARK_CHARACTER + '!',
     {0xC00000, 0xFF6060},
     {0xF0F0F0, 0x2B2B2B}},
    {MarkBreakpoint, QsciScintillaBase::SC_MARK_CIRCLE, {0x7F0000, 0xC04040}, {0x7F0000, 0xC04040}},
    {MarkCurrentLine,
     QsciScintillaBase::SC_MARK_SHORTARROW,
     {0x7F0000, 0x7F0000},
     {0xFFFF00, 0xFFFF00}},
};

struct FoldLook {
    int mark;
    int symbol;
};

constexpr FoldLook kFoldLooks[] = {
    {QsciScintillaBase::SC_MARKNUM_FOLDER, QsciScintillaBase::SC_MARK_BOXPLUS},
    {QsciScintillaBase::SC_MARKNUM_FOLDEROPEN, QsciScintillaBase::SC_MARK_BOXMINUS},
    {QsciScintillaBase::SC_MARKNUM_FOLDERSUB, QsciScintillaBase::SC_MARK_VLINE},
    {QsciScintillaBase::SC_MARKNUM_FOLDERTAIL, QsciScintillaBase::SC_MARK_LCORNER},
    {QsciScintillaBase::SC_MARKNUM_FOLDEREND, QsciScintillaBase::SC_MARK_BOXPLUSCONNECTED},
    {QsciScintillaBase::SC_MARKNUM_FOLDEROPENMID, QsciScintillaBase::SC_MARK_BOXMINUSCONNECTED},
    {QsciScintillaBase::SC_MARKNUM_FOLDERMIDTAIL, QsciScintillaBase::SC_MARK_TCORNER},
};

constexpr unsigned kFoldMask = 0xFE000000;

// The keys of the menus are the window's, so the toolkit's own commands keep only those that move
// and delete.
void ReleaseKeys(QsciCommandSet& commands) {
    const auto isFree = [](int key) {
        return (key & ~static_cast<int>(Qt::KeyboardModifierMask)) < kFirstNamedKey;
    };
    for (QsciCommand* command : commands.commands()) {
        if (command->key() != 0 && isFree(command->key())) command->setKey(0);
        if (command->alternateKey() != 0 && isFree(command->alternateKey())) {
            command->setAlternateKey(0);
        }
    }
}

bool IsBlockWord(std::string_view word) {
    return word == operands::Keyword::Else ||
           std::ranges::any_of(workbench::OutlineBlocks(), [word](const auto& block) {
               return !block.ignored && (word == block.start || word == block.end);
           });
}

}  // namespace

void CKalvexEditCtrl::SetUp() {
    setUtf8(true);
    setEolMode(EolUnix);
    setWrapMode(WrapNone);
    ReleaseKeys(*standardCommands());
    Ask(SCI_SETLEXER, SCLEX_CONTAINER);
    Ask(SCI_SETTABWIDTH, kTabWidth);
    Ask(SCI_SETUSETABS, 1);
    Ask(SCI_SETTABINDENTS, 0);
    Ask(SCI_SETBACKSPACEUNINDENTS, 0);
    Ask(SCI_SETMULTIPLESELECTION, 1);
    Ask(SCI_SETADDITIONALSELECTIONTYPING, 1);
    Ask(SCI_SETMULTIPASTE, SC_MULTIPASTE_EACH);
    Ask(SCI_SETVIRTUALSPACEOPTIONS, SCVS_RECTANGULARSELECTION);
    Ask(SCI_SETSCROLLWIDTH, 1);
    Ask(SCI_SETSCROLLWIDTHTRACKING, 1);
    Ask(SCI_SETLAYOUTCACHE, SC_CACHE_PAGE);
    Ask(SCI_SETCARETWIDTH, kCaretWidth);
    Ask(SCI_SETAUTOMATICFOLD, SC_AUTOMATICFOLD_SHOW | SC_AUTOMATICFOLD_CHANGE);
    Ask(SCI_FOLDDISPLAYTEXTSETSTYLE, SC_FOLDDISPLAYTEXT_BOXED);
    Ask(SCI_SETMARGINTYPEN, MarginNumbers, SC_MARGIN_NUMBER);
    Ask(SCI_SETMARGINMASKN, MarginNumbers, 0);
    Ask(SCI_SETMARGINTYPEN, MarginSymbols, SC_MARGIN_SYMBOL);
    Ask(SCI_SETMARGINMASKN, MarginSymbols, static_cast<long>(kMarkerMask));
    Ask(SCI_SETMARGINTYPEN, MarginOutline, SC_MARGIN_SYMBOL);
    Ask(SCI_SETMARGINMASKN, MarginOutline, static_cast<long>(kFoldMask));
    Ask(SCI_SETMARGINWIDTHN, MarginSymbols, kSymbolsWidth);
    Ask(SCI_SETMARGINWIDTHN, MarginOutline, kOutlineMarginWidth);
    for (const int margin : {MarginNumbers, MarginSymbols, MarginOutline}) {
        Ask(SCI_SETMARGINSENSITIVEN, margin, 1);
    }
    Ask(SCI_INDICSETSTYLE, kBlockIndicator, INDIC_FULLBOX);
    Ask(SCI_INDICSETUNDER, kBlockIndicator, 1);
    m_font = QApplication::font();
    m_font.setFamily(kFace);
    m_font.setStyleHint(QFont::Monospace);
    m_font.setWeight(QFont::Normal);
    m_font.setItalic(false);
    ApplyScheme();
}

void CKalvexEditCtrl::SetScheme(bool dark) {
    if (dark == m_dark) return;
    m_dark = dark;
    ApplyScheme();
}

void CKalvexEditCtrl::SetEditorFont(const QFont& font) {
    m_font = font;
    ApplyScheme();
    FitLineNumbers();
}

void CKalvexEditCtrl::ApplyScheme() {
    ApplyStyles();
    DefineMarkers();
    SendScintilla(SCI_SETCARETFORE, kCaret.Of(m_dark));
    Ask(SCI_SETCARETLINEVISIBLE, 1);
    Ask(SCI_SETCARETLINEVISIBLEALWAYS, 1);
    SendScintilla(SCI_SETCARETLINEBACK, kCaretLine.Of(m_dark));
    Ask(SCI_SETCARETLINEBACKALPHA, kCaretLineAlpha);
    SendScintilla(SCI_SETSELBACK, 1UL, kSelection.Of(m_dark));
    SendScintilla(SCI_SETFOLDMARGINCOLOUR, 1UL, kMarginPaper.Of(m_dark));
    SendScintilla(SCI_SETFOLDMARGINHICOLOUR, 1UL, kMarginPaper.Of(m_dark));
    SendScintilla(SCI_INDICSETFORE, static_cast<unsigned long>(kBlockIndicator), kBlock.Of(m_dark));
}

void CKalvexEditCtrl::ApplyStyles() {
    const auto shade = [this](const workbench::StyleColours& colours) {
        return QColor(QRgb(m_dark ? colours.dark : colours.light));
    };
    const auto fore = [this](int style, const QColor& colour) {
        SendScintilla(SCI_STYLESETFORE, static_cast<unsigned long>(style), colour);
    };
    const QByteArray family = QFontInfo(m_font).family().toUtf8();
    SendScintilla(SCI_STYLESETFONT, static_cast<unsigned long>(STYLE_DEFAULT), family.constData());
    const double points =
        m_font.pointSizeF() > 0 ? m_font.pointSizeF() : QFontInfo(m_font).pointSizeF();
    Ask(SCI_STYLESETSIZEFRACTIONAL, STYLE_DEFAULT,
        std::lround(points * static_cast<double>(SC_FONT_SIZE_MULTIPLIER)));
    Ask(SCI_STYLESETWEIGHT, STYLE_DEFAULT, m_font.weight());
    Ask(SCI_STYLESETITALIC, STYLE_DEFAULT, m_font.italic() ? 1 : 0);
    fore(STYLE_DEFAULT, shade(workbench::ColoursOf(workbench::TextStyle::Plain)));
    SendScintilla(SCI_STYLESETBACK, static_cast<unsigned long>(STYLE_DEFAULT),
                  shade(workbench::EditorBackground(m_document.IsReadOnly())));
    Ask(SCI_STYLECLEARALL);
    for (int style = 0; style < workbench::kTextStyleCount; ++style) {
        fore(style, shade(workbench::ColoursOf(static_cast<workbench::TextStyle>(style))));
    }
    const int link = static_cast<int>(workbench::TextStyle::Link);
    Ask(SCI_STYLESETUNDERLINE, link, 1);
    Ask(SCI_STYLESETHOTSPOT, link, 1);
    fore(STYLE_LINENUMBER, kMarginText.Of(m_dark));
    SendScintilla(SCI_STYLESETBACK, static_cast<unsigned long>(STYLE_LINENUMBER),
                  kMarginPaper.Of(m_dark));
    fore(STYLE_FOLDDISPLAYTEXT, kMarginText.Of(m_dark));
}

void CKalvexEditCtrl::DefineMarkers() {
    const auto define = [this](int mark, int symbol, const QColor& edge, const QColor& fill) {
        const auto number = static_cast<unsigned long>(mark);
        Ask(SCI_MARKERDEFINE, mark, symbol);
        SendScintilla(SCI_MARKERSETFORE, number, edge);
        SendScintilla(SCI_MARKERSETBACK, number, fill);
    };
    for (const MarkLook& look : kMarkLooks) {
        define(look.mark, look.symbol, look.edge.Of(m_dark), look.fill.Of(m_dark));
    }
    for (const FoldLook& look : kFoldLooks) {
        define(look.mark, look.symbol, kMarginPaper.Of(m_dark), kMarginText.Of(m_dark));
    }
}

void CKalvexEditCtrl::ShowLineNumbers(bool shown) {
    m_lineNumbers = shown;
    FitLineNumbers();
}

void CKalvexEditCtrl::FitLineNumbers() {
    long width = 0;
    if (m_lineNumbers) {
        const QByteArray text = "_" + QByteArray::number(LineCount());
        width = std::max<long>(
            kNumbersWidth,
            SendScintilla(SCI_TEXTWIDTH, static_cast<unsigned long>(STYLE_LINENUMBER),
                          text.constData()));
    }
    if (width != Ask(SCI_GETMARGINWIDTHN, MarginNumbers)) {
        Ask(SCI_SETMARGINWIDTHN, MarginNumbers, width);
    }
}

void CKalvexEditCtrl::StyleTo(int position) {
    const int first = LineAt(static_cast<int>(Ask(SCI_GETENDSTYLED)));
    const int last = LineAt(position);
    std::vector<workbench::TextStyle> styles;
    Ask(SCI_STARTSTYLING, LineStart(first));
    for (int line = first; line <= last; ++line) {
        workbench::StyleLine(BufferLine(line), styles);
        const int next = line + 1 < LineCount() ? LineStart(line + 1) : LineEnd(line);
        styles.resize(static_cast<std::size_t>(next - LineStart(line)));
        SendScintilla(SCI_SETSTYLINGEX, static_cast<unsigned long>(styles.size()),
                      reinterpret_cast<const char*>(styles.data()));
    }
}

// ---- the words that belong together

void CKalvexEditCtrl::MatchBlock() {
    Ask(SCI_SETINDICATORCURRENT, kBlockIndicator);
    if (m_hasMatch) Ask(SCI_INDICATORCLEARRANGE, 0, Ask(SCI_GETLENGTH));
    const int line = CaretLine();
    const int match = m_document.State().m_bRunning ? -1 : m_outline.MatchAt(line);
    m_hasMatch = match >= 0;
    if (!m_hasMatch) return;
    MarkBlockWord(line);
    MarkBlockWord(match);
}

void CKalvexEditCtrl::MarkBlockWord(int line) {
    const std::string text = BufferLine(line);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = workbench::WordEnd(text, at);
        if (IsBlockWord(std::string_view(text).substr(at, end - at))) {
            Ask(SCI_INDICATORFILLRANGE, LineStart(line) + static_cast<long>(at),
                static_cast<long>(end - at));
            return;
        }
        at = std::max(end, at + 1);
    }
}

// ---- notes

void CKalvexEditCtrl::SetLineNote(int line, const QString& note) {
    const auto found = m_notes.find(line);
    if (note.isEmpty() ? found == m_notes.end() : found != m_notes.end() && found->second == note) {
        return;
    }
    if (note.isEmpty()) {
        m_notes.erase(found);
    } else {
        m_notes[line] = note;
    }
    const long top = Ask(SCI_POINTYFROMPOSITION, 0, LineStart(line));
    viewport()->update(0, static_cast<int>(top), viewport()->width(),
                       static_cast<int>(Ask(SCI_TEXTHEIGHT, line)));
}

std::vector<int> CKalvexEditCtrl::SeenLines() const {
    std::vector<int> lines;
    const long first = Ask(SCI_GETFIRSTVISIBLELINE);
    const long count = Ask(SCI_LINESONSCREEN);
    for (long shown = first; shown <= first + count; ++shown) {
        const int line = static_cast<int>(Ask(SCI_DOCLINEFROMVISIBLE, shown));
        if (line >= LineCount()) break;
        lines.push_back(line);
    }
    return lines;
}

void CKalvexEditCtrl::ClearLineNotes() {
    if (m_notes.empty()) return;
    m_notes.clear();
    viewport()->update();
}

void CKalvexEditCtrl::paintEvent(QPaintEvent* event) {
    QsciScintilla::paintEvent(event);
    if (!m_notes.empty()) PaintNotes(event->rect());
}

void CKalvexEditCtrl::PaintNotes(const QRect& area) {
    QPainter painter(viewport());
    painter.setClipRect(area);
    QFont font = m_font;
    font.setPointSizeF(std::max(font.pointSizeF() + static_cast<double>(Ask(SCI_GETZOOM)), 2.0));
    painter.setFont(font);
    painter.setPen(kNote.Of(m_dark));
    const int first = static_cast<int>(Ask(SCI_DOCLINEFROMVISIBLE, Ask(SCI_GETFIRSTVISIBLELINE)));
    for (auto note = m_notes.lower_bound(first); note != m_notes.end(); ++note) {
        if (note->first >= LineCount()) return;
        if (Ask(SCI_GETLINEVISIBLE, note->first) == 0) continue;
        const int end = LineEnd(note->first);
        const int top = static_cast<int>(Ask(SCI_POINTYFROMPOSITION, 0, end));
        if (top > area.bottom()) return;
        const int left = static_cast<int>(Ask(SCI_POINTXFROMPOSITION, 0, end)) + kNoteGap;
        const int height = static_cast<int>(Ask(SCI_TEXTHEIGHT, note->first));
        painter.drawText(QRect(left, top, viewport()->width() - left, height),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, note->second);
    }
}

}  // namespace kalvex::window
