// What the editor says about a word, and what it offers to go on with.
#include <QTimer>
#include <utility>

#include "workbench/model/EditorLines.h"
#include "workbench/model/EditorSettings.h"
#include "workbench/qt/EditScope.h"
#include "workbench/qt/ScriptEditor.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr int kMostHiddenLines = 30;
constexpr const char* kMore = "...";

}  // namespace

// ---- completion

std::string CKalvexEditCtrl::EngineLineBefore(int position) const {
    return workbench::FromBuffer(Bytes(LineStart(LineAt(position)), position).toStdString());
}

workbench::ScriptLines CKalvexEditCtrl::Lines() const {
    return {m_text.GetLineCount(), [this](int line) { return m_text.GetLine(line); }};
}

// The list that the character closes gives the focus back first.
void CKalvexEditCtrl::OnCharacter(int character) {
    if (character > 0x7F || Ask(SCI_GETSELECTIONS) > 1) return;
    const char typed = static_cast<char>(character);
    if (workbench::kIntelliSenseChars.find(typed) == std::string_view::npos) return;
    m_typed = typed;
    QTimer::singleShot(0, this, [this] { OfferMembers(); });
}

void CKalvexEditCtrl::OfferMembers() {
    if (!m_typed || !hasFocus()) return;
    const char typed = *std::exchange(m_typed, {});
    const std::string before = EngineLineBefore(CaretPosition());
    if (!before.ends_with(typed)) return;
    Open(m_words.OnTyped(typed, m_text.GetLine(CaretLine()), before.size(), Lines()));
}

bool CKalvexEditCtrl::CanComplete() {
    const std::string before = EngineLineBefore(CaretPosition());
    return !m_document.IsReadOnly() &&
           m_words.OnCommand(m_text.GetLine(CaretLine()), before.size(), Lines());
}

void CKalvexEditCtrl::ShowCompletion() {
    if (RefuseEdit()) return;
    const std::string before = EngineLineBefore(CaretPosition());
    Open(m_words.OnCommand(m_text.GetLine(CaretLine()), before.size(), Lines()));
}

void CKalvexEditCtrl::Open(const workbench::Offer& offer) {
    if (!offer) return;
    QStringList words;
    for (const std::string_view word : offer.list.words) words << ToQt(word);
    const int caret = CaretPosition();
    const std::string before = EngineLineBefore(caret);
    const int from =
        LineStart(LineAt(caret)) +
        static_cast<int>(
            workbench::ToBuffer(std::string_view(before).substr(0, offer.from)).size());
    const std::size_t word = workbench::WordStart(before, before.size());
    const QPoint place(static_cast<int>(Ask(SCI_POINTXFROMPOSITION, 0, caret)),
                       static_cast<int>(Ask(SCI_POINTYFROMPOSITION, 0, caret)) +
                           static_cast<int>(Ask(SCI_TEXTHEIGHT, LineAt(caret))));
    m_list->Open(
        viewport()->mapToGlobal(place), words,
        [this, from, separator = std::string(offer.separator)](const QString& chosen) {
            if (RefuseEdit()) return;
            const QByteArray text = QByteArray::fromStdString(separator) + chosen.toUtf8();
            const EditScope scope(*this, workbench::UndoTyping, EditScope::Grouping::Own);
            Ask(SCI_SETTARGETRANGE, from, CaretPosition());
            SendScintilla(SCI_REPLACETARGET, static_cast<unsigned long>(text.size()),
                          text.constData());
            Ask(SCI_GOTOPOS, from + text.size());
        },
        ToQt(std::string_view(before).substr(word)));
}

// ---- tips

QString CKalvexEditCtrl::TipAt(const QPoint& place) const {
    const int line = LineAt(static_cast<int>(Ask(SCI_POSITIONFROMPOINT, place.x(), place.y())));
    const bool current = line == m_model.GetSelectedLine() && m_calls.currentLineTip;
    if (MarginAt(place.x()) >= 0) {
        if (line == m_errorLine) return ToQt(m_errorText);
        return current ? m_calls.currentLineTip() : QString();
    }
    const QString tip = TipOfText(place, line);
    return tip.isEmpty() && current ? m_calls.currentLineTip() : tip;
}

QString CKalvexEditCtrl::TipOfText(const QPoint& place, int line) const {
    if (IsFolded(line) && place.x() > Ask(SCI_POINTXFROMPOSITION, 0, LineEnd(line))) {
        return HiddenText(line);
    }
    const int position =
        static_cast<int>(Ask(SCI_CHARPOSITIONFROMPOINTCLOSE, place.x(), place.y()));
    if (position < 0) return {};
    const std::string_view text = m_text.GetLine(line);
    const std::size_t offset = EngineLineBefore(position).size();
    const std::string_view link = workbench::LinkAt(text, offset);
    if (!link.empty()) return ToQt(link);
    return ToQt(m_help.TextOf(workbench::WordAt(text, offset)));
}

QString CKalvexEditCtrl::HiddenText(int header) const {
    const int last = static_cast<int>(Ask(SCI_GETLASTCHILD, header, -1));
    QStringList lines;
    for (int line = header + 1; line <= last && lines.size() < kMostHiddenLines; ++line) {
        lines << ToQt(m_text.GetLine(line));
    }
    if (last - header > kMostHiddenLines) lines << kMore;
    return lines.join('\n');
}

}  // namespace kalvex::window
