#include "workbench/qt/VariablesModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include "support/fake_script.h"
#include "support/zone_scope.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class VariablesModelTest : public testing::Test {
  protected:
    VariablesModelTest() {
        QObject::connect(&m_model, &QAbstractItemModel::dataChanged,
                         [this](const QModelIndex& first, const QModelIndex& last) {
                             m_heard.push_back("changed " + Place(first) + "-" + Place(last));
                         });
        QObject::connect(&m_model, &QAbstractItemModel::rowsInserted,
                         [this](const QModelIndex&, int first, int last) {
                             m_heard.push_back("inserted " + Span(first, last));
                         });
        QObject::connect(&m_model, &QAbstractItemModel::rowsRemoved,
                         [this](const QModelIndex&, int first, int last) {
                             m_heard.push_back("removed " + Span(first, last));
                         });
    }

    std::vector<std::string> Refresh() {
        m_heard.clear();
        m_model.Refresh([this](workbench::VariablesTable& table) {
            return table.Refresh(m_script.Variables());
        });
        return m_heard;
    }
    QString Cell(int row, int column, int role = Qt::DisplayRole) const {
        return m_model.index(row, column).data(role).toString();
    }
    static std::string Place(const QModelIndex& index) {
        return std::to_string(index.row()) + "/" + std::to_string(index.column());
    }
    static std::string Span(int first, int last) {
        return std::to_string(first) + "-" + std::to_string(last);
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::FakeScript m_script;
    VariablesModel m_model{m_script.translator};
    QAbstractItemModelTester m_tester{&m_model,
                                      QAbstractItemModelTester::FailureReportingMode::Fatal};
    std::vector<std::string> m_heard;
};

TEST_F(VariablesModelTest, ColumnsHaveTheirHeaders) {
    QStringList headers;
    for (int column = 0; column < m_model.columnCount(); ++column) {
        headers << m_model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        EXPECT_EQ(m_model.headerData(column, Qt::Horizontal, Qt::ToolTipRole), headers.back());
    }
    EXPECT_EQ(headers.join("|"),
              QString::fromUtf8("Nazwa zmiennej|Typ|Wartość bieżąca|Wartość godzinowa|"
                                "Wartość dobowa|Wartość miesięczna|Wartość okresowa"));
    EXPECT_EQ(m_model.rowCount(), 0);
}

TEST_F(VariablesModelTest, ViewsHearOfNewRowsAndOfChangedCellsAlone) {
    operands::CVariableLocal& first = m_script.Local("Ż");
    m_script.Local("B", value::CVal(2.0));
    EXPECT_THAT(Refresh(), ElementsAre("inserted 0-1"));
    EXPECT_EQ(Cell(0, 0), QString::fromUtf8("Ż"));
    EXPECT_EQ(Cell(1, 1), "L");
    EXPECT_EQ(Cell(1, 2), "1970-01-01 01:00:00 ( 0 ) 2.00");
    EXPECT_EQ(Cell(1, 2, Qt::ToolTipRole), Cell(1, 2));
    EXPECT_FALSE(m_model.index(0, 0).data(Qt::DecorationRole).isValid());
    EXPECT_THAT(Refresh(), IsEmpty());
    first.SetValue(value::CVal(1.0), value::KindCurrent);
    EXPECT_THAT(Refresh(), ElementsAre("changed 0/2-0/2"));
    EXPECT_EQ(Cell(0, 2), "1970-01-01 01:00:00 ( 0 ) 1.00");
    m_script.List("C");
    EXPECT_THAT(Refresh(), ElementsAre("inserted 2-2"));
}

TEST_F(VariablesModelTest, ResetTakesTheRowsAway) {
    m_script.Local("A");
    m_script.Local("B");
    m_script.Local("C");
    Refresh();
    m_script.Variables().RemoveAll();
    EXPECT_THAT(Refresh(), ElementsAre("removed 0-2"));
    EXPECT_EQ(m_model.rowCount(), 0);
    m_script.Local("A");
    EXPECT_THAT(Refresh(), ElementsAre("inserted 0-0"));
}

}  // namespace
}  // namespace kalvex::window
