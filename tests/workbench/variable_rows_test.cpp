// What a console shows of a script's variables.
#include "workbench/model/VariableRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;

class VariableRowsTest : public testing::Test {
  protected:
    VariableRowsTest() {
        engine::LineList text;
        text.SetText("LOCAL X = 5\nPOINTER P\nLIST L\nREMOTE R srv@V\nLOCAL X\n");
        m_rows.Rebuild(text);
    }

    std::vector<std::string> Cells(std::size_t row) {
        const VariableCells cells = m_rows.CellsOf(row);
        return {cells.begin(), cells.end()};
    }

    VariableRows m_rows;
};

TEST_F(VariableRowsTest, DeclarationsHaveALetterForTheirKindAndNoValues) {
    ASSERT_EQ(m_rows.GetCount(), 5u);
    EXPECT_THAT(Cells(0), ElementsAre("X", "L", "", "", "", "", ""));
    EXPECT_THAT(Cells(1), ElementsAre("P", "P", "", "", "", "", ""));
    EXPECT_THAT(Cells(2), ElementsAre("L", "A", "", "", "", "", ""));
    EXPECT_THAT(Cells(3), ElementsAre("R", "R", "", "", "", "", ""));
}

TEST_F(VariableRowsTest, FieldsGoToTheFirstRowOfTheName) {
    EXPECT_EQ(m_rows.Update("R", ";1;2;3;4;5;"), 3);
    EXPECT_THAT(Cells(3), ElementsAre("R", "R", "1", "2", "3", "4", "5"));
    EXPECT_EQ(m_rows.Update("X", ";7;"), 0);
    EXPECT_THAT(Cells(0), ElementsAre("X", "L", "7", "", "", "", ""));
    EXPECT_THAT(Cells(4), ElementsAre("X", "L", "", "", "", "", ""));
    EXPECT_EQ(m_rows.Update("x", ";7;"), -1);
    EXPECT_EQ(m_rows.Update("", ";7;"), -1);
}

TEST_F(VariableRowsTest, EmptyFieldsLetTheNextOnesMoveUpAndOldTextsStay) {
    m_rows.Update("R", ";1;2;3;4;5;");
    EXPECT_EQ(m_rows.Update("R", ";;;x;;y;"), 3);
    EXPECT_THAT(Cells(3), ElementsAre("R", "R", "x", "y", "3", "4", "5"));
    EXPECT_EQ(m_rows.Update("R", ""), 3);
    EXPECT_EQ(m_rows.Update("R", ";;;;;;"), 3);
    EXPECT_THAT(Cells(3), ElementsAre("R", "R", "x", "y", "3", "4", "5"));
    EXPECT_EQ(m_rows.Update("R", "a;b;c;d;e;f;g"), 3);
    EXPECT_THAT(Cells(3), ElementsAre("R", "R", "a", "b", "c", "d", "e"));
}

TEST_F(VariableRowsTest, ClearedRowsAreNone) {
    m_rows.Clear();
    EXPECT_EQ(m_rows.GetCount(), 0u);
    EXPECT_EQ(m_rows.Update("X", ";7;"), -1);
}

}  // namespace
}  // namespace kalvex::workbench
