// What a person can take back, and what it is called.
#include "workbench/model/UndoActions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SilentTranslator final : public platform::Translator {
  public:
    std::string Translate(const char* polish) const override {
        return std::string_view(polish) == "<?>" ? polish : "";
    }
};

const platform::Translator kTranslator;

TEST(UndoActionsTest, EachCodeHasItsText) {
    const struct {
        unsigned code;
        const char* text;
    } rows[] = {
        {0, "Nieznana operacja"},
        {256, "Wprowadzenie tekstu"},
        {512, "Wycięcie tekstu"},
        {1024, "Wklejenie tekstu"},
        {2048, "Usunięcie tekstu"},
        {4096, "Skasowanie znaku"},
        {8192, "Operacja przeciągnij i upuść"},
        {16384, "Przejście do nowej linii"},
        {32768, "Zwiększenie wcięcia"},
        {0x10000, "Zmniejszenie wcięcia"},
        {0x20000, "Tabulacja"},
        {0x40000, "Zamiana tekstu"},
        {0x80000, "<Nieokreślona operacja>"},
        {768, "<Nieokreślona operacja>"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text::ToUtf8(DescribeUndo(row.code, kTranslator)), row.text);
        EXPECT_EQ(text::ToUtf8(DescribeUndo(row.code | 0xFF, kTranslator)), row.text);
    }
}

TEST(UndoActionsTest, EmptyDescriptionShowsAsSuch) {
    EXPECT_EQ(DescribeUndo(UndoTyping, SilentTranslator()), "<?>");
}

TEST(UndoActionsTest, CountIsInWords) {
    const auto countText = [](UndoDirection direction, int count) {
        return text::ToUtf8(UndoCountText(direction, count, kTranslator));
    };
    EXPECT_EQ(countText(UndoDirection::Undo, 1), "Cofnij 1 krok");
    EXPECT_EQ(countText(UndoDirection::Undo, 2), "Cofnij 2 kroki");
    EXPECT_EQ(countText(UndoDirection::Redo, 4), "Ponów 4 kroki");
    EXPECT_EQ(countText(UndoDirection::Redo, 5), "Ponów 5 kroków");
    EXPECT_EQ(countText(UndoDirection::Undo, 22), "Cofnij 22 kroków");
}

TEST(UndoActionsTest, ListsFollowTheEditor) {
    UndoActions actions;
    EXPECT_TRUE(actions.IsEmpty(UndoDirection::Undo));
    for (const unsigned code : {UndoTyping, UndoPaste, UndoCut}) actions.Done(code);
    EXPECT_THAT(actions.List(UndoDirection::Undo), ElementsAre(UndoCut, UndoPaste, UndoTyping));
    EXPECT_EQ(actions.Newest(UndoDirection::Undo), UndoCut);
    actions.Undone();
    actions.Undone();
    EXPECT_EQ(actions.Newest(UndoDirection::Redo), UndoPaste);
    EXPECT_THAT(actions.List(UndoDirection::Undo), ElementsAre(UndoTyping));
    EXPECT_THAT(actions.List(UndoDirection::Redo), ElementsAre(UndoPaste, UndoCut));
    actions.Redone();
    EXPECT_THAT(actions.List(UndoDirection::Undo), ElementsAre(UndoPaste, UndoTyping));
    EXPECT_THAT(actions.List(UndoDirection::Redo), ElementsAre(UndoCut));
    actions.Done(UndoIndent);
    EXPECT_TRUE(actions.IsEmpty(UndoDirection::Redo));
    actions.Clear();
    EXPECT_THAT(actions.List(UndoDirection::Undo), IsEmpty());
}

}  // namespace
}  // namespace kalvex::workbench
