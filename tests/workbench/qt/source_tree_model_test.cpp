#include "workbench/qt/SourceTreeModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

namespace kalvex::window {
namespace {

TEST(SourceTreeModelTest, IsAModel) {
    vantrel::CObjInfoList list;
    for (const char* path : {"A/B", "A", "", "C"}) {
        list.emplace_back(vantrel::VariableDefinition{"V", {{"pa", path}, {"nd", "opis"}}});
    }
    SourceTreeModel model{platform::Translator()};
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.SetTree({list, ""});
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(), "Nazwa");
    EXPECT_EQ(model.headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), "Opis");
    model.SetTree({list, "nie"});
    EXPECT_EQ(model.rowCount(), 0);
}

}  // namespace
}  // namespace kalvex::window
