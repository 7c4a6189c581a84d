#include "workbench/model/UndoActions.h"

#include <algorithm>

#include "text/TextFormat.h"

namespace kalvex::workbench {

namespace {

constexpr unsigned kLowBits = 0xFF;
constexpr int kLastOfFew = 4;

struct CodeRow {
    unsigned code;
    const char* text;
};

constexpr CodeRow kCodes[] = {
    {UndoUnknown, platform::Translatable("Nieznana operacja")},
    {UndoTyping, platform::Translatable("Wprowadzenie tekstu")},
    {UndoCut, platform::Translatable("Wycięcie tekstu")},
    {UndoPaste, platform::Translatable("Wklejenie tekstu")},
    {UndoDelete, platform::Translatable("Usunięcie tekstu")},
    {UndoDeleteCharacter, platform::Translatable("Skasowanie znaku")},
    {UndoDragAndDrop, platform::Translatable("Operacja przeciągnij i upuść")},
    {UndoNewLine, platform::Translatable("Przejście do nowej linii")},
    {UndoIndent, platform::Translatable("Zwiększenie wcięcia")},
    {UndoUnindent, platform::Translatable("Zmniejszenie wcięcia")},
    {UndoTabulation, platform::Translatable("Tabulacja")},
    {UndoReplace, platform::Translatable("Zamiana tekstu")},
};

constexpr const char* kOtherCode = platform::Translatable("<Nieokreślona operacja>");
constexpr const char* kNoDescription = platform::Translatable("<?>");

constexpr const char* kUndo = platform::Translatable("Cofnij ");
constexpr const char* kRedo = platform::Translatable("Ponów ");
constexpr const char* kOneStep = platform::Translatable("%d krok");
constexpr const char* kFewSteps = platform::Translatable("%d kroki");
constexpr const char* kSteps = platform::Translatable("%d kroków");

const char* StepsText(int count) {
    if (count == 1) return kOneStep;
    return count <= kLastOfFew ? kFewSteps : kSteps;
}

}  // namespace

std::string DescribeUndo(unsigned code, const platform::Translator& translator) {
    const auto* row = std::ranges::find(kCodes, code & ~kLowBits, &CodeRow::code);
    std::string text = translator.Translate(row == std::end(kCodes) ? kOtherCode : row->text);
    return text.empty() ? translator.Translate(kNoDescription) : text;
}

std::string UndoCountText(UndoDirection direction, int count,
                          const platform::Translator& translator) {
    return translator.Translate(direction == UndoDirection::Undo ? kUndo : kRedo) +
           text::FormatText(translator.Translate(StepsText(count)), {std::to_string(count)});
}

void UndoActions::Done(unsigned code) {
    m_undo.push_back(code);
    m_redo.clear();
}

void UndoActions::Undone() {
    m_redo.push_back(m_undo.back());
    m_undo.pop_back();
}

void UndoActions::Redone() {
    m_undo.push_back(m_redo.back());
    m_redo.pop_back();
}

void UndoActions::Clear() {
    m_undo.clear();
    m_redo.clear();
}

void UndoActions::ClearRedo() {
    m_redo.clear();
}

std::vector<unsigned> UndoActions::List(UndoDirection direction) const {
    const std::vector<unsigned>& list = direction == UndoDirection::Undo ? m_undo : m_redo;
    return {list.rbegin(), list.rend()};
}

bool UndoActions::IsEmpty(UndoDirection direction) const {
    return (direction == UndoDirection::Undo ? m_undo : m_redo).empty();
}

unsigned UndoActions::Newest(UndoDirection direction) const {
    return (direction == UndoDirection::Undo ? m_undo : m_redo).back();
}

}  // namespace kalvex::workbench
