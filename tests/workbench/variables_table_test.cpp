// The rows of a variables window.
#include "workbench/model/VariablesTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "slotted_remote.h"
#include "support/fake_script.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class VariablesTableTest : public testing::Test {
  protected:
    TableChanges Refresh() { return m_table.Refresh(m_script.Variables()); }
    std::vector<std::string> Cells(int row) const {
        const VariableCells& cells = m_table.CellsOf(row);
        return {cells.begin(), cells.end()};
    }
    std::string Names() const {
        std::string names;
        for (int row = 0; row < m_table.GetCount(); ++row) names += m_table.NameOf(row) + " ";
        return names;
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::FakeScript m_script;
    VariablesTable m_table;
};

TEST_F(VariablesTableTest, RowsComeInTheOrderOfDeclaration) {
    m_script.Local("B", value::CVal(5.0));
    m_script.Pointer("a", "B");
    const TableChanges first = Refresh();
    EXPECT_EQ(first.oldCount, 0);
    EXPECT_EQ(first.newCount, 2);
    EXPECT_THAT(first.cells, IsEmpty());
    EXPECT_THAT(Cells(0), ElementsAre("B", "L", "1970-01-01 01:00:00 ( 0 ) 5.00", "", "", "", ""));
    EXPECT_THAT(Cells(1), ElementsAre("a", "P", "1970-01-01 01:00:00 ( 0 ) 5.00", "", "", "", ""));
    m_script.List("L");
    const TableChanges second = Refresh();
    EXPECT_EQ(second.oldCount, 2);
    EXPECT_EQ(second.newCount, 3);
    EXPECT_THAT(second.cells, IsEmpty());
    EXPECT_THAT(Cells(2), ElementsAre("L", "A", "", "", "", "", ""));
}

TEST_F(VariablesTableTest, OnlyCellsWhoseTextDiffersChange) {
    operands::CVariableLocal& local = m_script.Local("X", value::CVal(1.0));
    m_script.Local("Y", value::CVal(2.0));
    auto& remote = SlottedRemote::In(m_script, "R");
    m_script.Pointer("P", "X");
    Refresh();
    EXPECT_THAT(Refresh().cells, IsEmpty());
    local.SetValue(value::CVal(1.5), value::KindCurrent);
    remote.values[value::KindDay] = value::CVal(3);
    EXPECT_THAT(Refresh().cells, ElementsAre(CellPlace{0, 2}, CellPlace{2, 4}, CellPlace{3, 2}));
    local.SetValue(value::CVal("1.50"), value::KindCurrent);  // another value with the same text
    EXPECT_THAT(Refresh().cells, IsEmpty());
    remote.values.clear();
    EXPECT_THAT(Refresh().cells, ElementsAre(CellPlace{2, 4}));
    EXPECT_THAT(Cells(2), ElementsAre("R", "R", "", "", "", "", ""));
}

TEST_F(VariablesTableTest, ResetTakesTheRowsAlongAndOthersTakeTheirPlaces) {
    m_script.Local("X");
    m_script.Local("Y");
    Refresh();
    m_script.Variables().RemoveAll();
    const TableChanges reset = Refresh();
    EXPECT_EQ(reset.oldCount, 2);
    EXPECT_EQ(reset.newCount, 0);
    EXPECT_EQ(m_table.GetCount(), 0);
    m_script.Local("Y");
    m_script.Local("Z");
    Refresh();
    m_script.Variables().RemoveAll();
    m_script.List("Z");
    EXPECT_THAT(Refresh().cells, ElementsAre(CellPlace{0, 0}, CellPlace{0, 1}, CellPlace{0, 2}));
    EXPECT_EQ(Names(), "Z ");
}

TEST_F(VariablesTableTest, ConsoleShowsItsCopyOfTheRows) {
    engine::LineList text;
    text.SetText("LOCAL X\nREMOTE R srv@V\n");
    VariableRows rows;
    rows.Rebuild(text);
    EXPECT_EQ(m_table.Refresh(rows).newCount, 2);
    rows.Update("R", ";a;;c;");
    EXPECT_THAT(m_table.Refresh(rows).cells, ElementsAre(CellPlace{1, 2}, CellPlace{1, 3}));
    EXPECT_THAT(Cells(1), ElementsAre("R", "R", "a", "c", "", "", ""));
    rows.Rebuild(text);
    EXPECT_THAT(m_table.Refresh(rows).cells, ElementsAre(CellPlace{1, 2}, CellPlace{1, 3}));
    EXPECT_THAT(Cells(1), ElementsAre("R", "R", "", "", "", "", ""));
    rows.Clear();
    EXPECT_EQ(m_table.Refresh(rows).newCount, 0);
    EXPECT_EQ(m_table.GetCount(), 0);
}

// ---- finding

struct FindRow {
    const char* text;
    int options;
    int selected;
    int row;
    int beeps;
};

TEST_F(VariablesTableTest, SearchGoesOnBehindTheSelectedRowAndOnceMoreFromTheFirst) {
    for (const char* name : {"TEMP1", "CISN", "TEMP2", "temp3", "TEMP"}) m_script.Local(name);
    Refresh();
    constexpr FindRow kRows[] = {
        {"temp", 5, -1, 0, 0},    // the search is in upper case
        {"temp", 5, 0, 2, 0},     // behind the selected row
        {"temp", 5, 2, 4, 0},     // a name in lower case is not the same
        {"temp", 5, 4, 0, 1},     // behind the last row, from the first
        {"cisn", 5, 1, 1, 1},     // the selected row is the only one
        {"CISN", 5, 3, 1, 1},     //
        {"X", 5, 2, -1, 2},       // not there
        {"X", 5, -1, -1, 1},      // not there, from the first row on
        {"t*2", 5, -1, 2, 0},     // wildcards
        {"t*2", 4, -1, -1, 1},    // are literal without their option
        {"EMP", 5, -1, 0, 0},     // anywhere
        {"EMP", 1, -1, -1, 1},    // not at the beginning
        {"temp", 3, -1, 4, 0},    // the whole name
        {"temp3", 13, -1, 3, 0},  // letters of either case
        {"", 5, 1, 2, 0},         // matches every row
    };
    for (const FindRow& row : kRows) {
        const FoundRow found = m_table.Find(row.selected, row.text, row.options);
        EXPECT_EQ(found.row, row.row) << row.text << row.options << row.selected;
        EXPECT_EQ(found.beeps, row.beeps) << row.text << row.options << row.selected;
    }
}

TEST_F(VariablesTableTest, PolishLettersAreRaisedForTheSearch) {
    m_script.Local("ŻÓŁĆ");
    Refresh();
    EXPECT_EQ(m_table.Find(-1, text::FromUtf8("żół"), 5).row, 0);
}

TEST_F(VariablesTableTest, NothingIsFoundInNoRows) {
    const FoundRow found = m_table.Find(-1, "X", 5);
    EXPECT_EQ(found.row, -1);
    EXPECT_EQ(found.beeps, 1);
}

// ---- changing a value by hand

TEST_F(VariablesTableTest, ValueIsReadAsItStands) {
    value::CVal value(7.0);
    value.SetStatus(value::Status::Unknown);
    m_script.Local("X", value);
    m_script.Pointer("P", "X");
    m_script.Pointer("NIC", "NIE");
    m_script.List("L");
    for (const char* name : {"X", "P"}) {
        const auto read = ReadByHand(m_script.Variables(), name);
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(value::ValueToText(*read), "7.00");
        EXPECT_EQ(read->GetStatus(), value::Status::Unknown);
    }
    for (const char* name : {"NIC", "L"}) {
        const auto read = ReadByHand(m_script.Variables(), name);
        ASSERT_TRUE(read.has_value()) << name;
        EXPECT_EQ(read->GetType(), value::ValueType::None) << name;
    }
    EXPECT_EQ(ReadByHand(m_script.Variables(), "x"), std::nullopt);
    EXPECT_EQ(ReadByHand(m_script.Variables(), "X.HREP"), std::nullopt);
    EXPECT_EQ(m_script.Error(), "0");
}

TEST_F(VariablesTableTest, WhatCannotBeUsedIsNotRead) {
    auto& remote = SlottedRemote::In(m_script, "R");
    remote.values[value::KindCurrent] = value::CVal(3);
    remote.answers[value::KindCurrent] = operands::ReadUnavailable;
    const auto read = ReadByHand(m_script.Variables(), "R");
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->GetType(), value::ValueType::None);
}

TEST_F(VariablesTableTest, ValueIsWrittenToWhatTheNameLeadsTo) {
    m_script.Local("X");
    m_script.Pointer("P", "X");
    m_script.Pointer("NIC", "NIE");
    m_script.List("L");
    EXPECT_TRUE(WriteByHand(m_script.Variables(), "X", value::CVal(1)));
    EXPECT_EQ(value::ValueToText(m_script.Value("X")), "1");
    EXPECT_TRUE(WriteByHand(m_script.Variables(), "P", value::CVal("dwa")));
    EXPECT_EQ(value::ValueToText(m_script.Value("X")), "dwa");
    EXPECT_EQ(value::ValueToText(m_script.Value("X", value::KindHour)), "");
    for (const char* name : {"NIC", "L", "NIE"}) {
        EXPECT_FALSE(WriteByHand(m_script.Variables(), name, value::CVal(2))) << name;
    }
    auto& remote = SlottedRemote::In(m_script, "R");
    remote.takes = false;
    EXPECT_FALSE(WriteByHand(m_script.Variables(), "R", value::CVal(2)));
    EXPECT_EQ(m_script.Error(), "0");
}

}  // namespace
}  // namespace kalvex::workbench
