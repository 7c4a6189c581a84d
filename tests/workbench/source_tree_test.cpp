// The tree of a source's variables.
#include "workbench/model/SourceTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Variable {
    const char* name;
    const char* path;
    const char* description;
};

vantrel::CObjInfoList Variables(std::initializer_list<Variable> variables) {
    vantrel::CObjInfoList list;
    for (const Variable& variable : variables) {
        list.emplace_back(vantrel::VariableDefinition{
            text::FromUtf8(variable.name),
            {{"pa", text::FromUtf8(variable.path)}, {"nd", text::FromUtf8(variable.description)}}});
    }
    return list;
}

// What is shown, a line each, indented by its level: "[group]" or "leaf: description".
std::vector<std::string> Shown(const SourceTree& tree) {
    std::vector<std::string> lines;
    for (int node = 1; node < tree.GetCount(); ++node) {
        std::string indent;
        for (int parent = tree[node].parent; parent > 0; parent = tree[parent].parent) {
            indent += "  ";
        }
        const std::string text = text::ToUtf8(tree[node].text);
        lines.push_back(indent + (tree[node].leaf
                                      ? text + ": " + text::ToUtf8(tree[node].description)
                                      : "[" + text + "]"));
        const SourceTreeNode& parent = tree[tree[node].parent];
        EXPECT_EQ(parent.children.at(static_cast<std::size_t>(tree[node].row)), node);
    }
    return lines;
}

const vantrel::CObjInfoList& Plant() {
    static const vantrel::CObjInfoList plant = Variables({
        {"Z1_CISN", "Sieć/Z1", "Ciśnienie"},
        {"BILANS", "", "Bilans doby"},
        {"Z2_CISN", "Sieć/Z2", "Z2_CISN"},
        {"Z1_TEMP", "Sieć/Z1", ""},
        {"SIEC", "Sieć", ""},
        {"LUZEM", "Z1", ""},
    });
    return plant;
}

TEST(SourceTreeTest, GroupsComeByPathAndEachPathIsItsOwnGroup) {
    const SourceTree tree(Plant(), "");
    EXPECT_THAT(Shown(tree), ElementsAre("[Sieć]", "  [Z1]", "    Z1_CISN: Ciśnienie",
                                         "    Z1_TEMP: ", "  [Z2]", "    Z2_CISN: ", "  SIEC: ",
                                         "BILANS: Bilans doby", "[Z1]", "  LUZEM: "));
    EXPECT_EQ(tree.GetFirstGroup(), 1);
}

TEST(SourceTreeTest, FirstGroupMayStandBehindALeaf) {
    const SourceTree tree(Variables({{"A", "", ""}, {"B", "G/H", ""}}), "");
    EXPECT_THAT(Shown(tree), ElementsAre("A: ", "[G]", "  [H]", "    B: "));
    EXPECT_EQ(tree.GetFirstGroup(), 2);
    EXPECT_EQ(SourceTree(Variables({{"A", "", ""}}), "").GetFirstGroup(), -1);
}

TEST(SourceTreeTest, EmptyPartsOfAPathAreNoGroups) {
    const SourceTree tree(Variables({{"A", "/G//H/", ""}, {"B", "G/H", ""}, {"C", "//", ""}}), "");
    EXPECT_THAT(Shown(tree), ElementsAre("[G]", "  [H]", "    A: ", "    B: ", "C: "));
}

struct FilterRow {
    const char* filter;
    std::vector<std::string> shown;
};

TEST(SourceTreeTest, FilterLeavesWhatMatchesByNameOrDescription) {
    const FilterRow kRows[] = {
        {"z1*", {"[Sieć]", "  [Z1]", "    Z1_CISN: Ciśnienie", "    Z1_TEMP: "}},
        {"?1_TEMP", {"[Sieć]", "  [Z1]", "    Z1_TEMP: "}},
        {"ciŚnienie", {"[Sieć]", "  [Z1]", "    Z1_CISN: Ciśnienie"}},
        {"CISN", {}},  // the whole text must match
        {"*CISN", {"[Sieć]", "  [Z1]", "    Z1_CISN: Ciśnienie", "  [Z2]", "    Z2_CISN: "}},
        {"*doby", {"BILANS: Bilans doby"}},
        {"luzem", {"[Z1]", "  LUZEM: "}},
        {"Sieć", {}},  // groups do not match
        {"*", Shown(SourceTree(Plant(), ""))},
    };
    for (const FilterRow& row : kRows) {
        EXPECT_EQ(Shown(SourceTree(Plant(), text::FromUtf8(row.filter))), row.shown) << row.filter;
    }
    EXPECT_EQ(SourceTree(Plant(), "nie").GetFirstGroup(), -1);
}

TEST(SourceTreeTest, OrderOfGroupsDoesNotDependOnTheFilter) {
    const vantrel::CObjInfoList list =
        Variables({{"A1", "G", ""}, {"B2", "H", ""}, {"B1", "G", ""}});
    EXPECT_THAT(Shown(SourceTree(list, "B*")), ElementsAre("[G]", "  B1: ", "[H]", "  B2: "));
}

TEST(SourceTreeTest, ThereIsNothingOfNothing) {
    EXPECT_EQ(SourceTree().GetCount(), 1);
    EXPECT_EQ(SourceTree(Variables({}), "").GetCount(), 1);
    EXPECT_EQ(SourceTree().GetFirstGroup(), -1);
}

TEST(SourceTreeTest, ChosenLeavesAreDeclaredInTheOrderOfTheTree) {
    const SourceTree tree(Plant(), "");
    EXPECT_THAT(tree.GetDeclarations({8, 4, 1, 3}, "srv"),
                ElementsAre("REMOTE Z1_CISN srv@Z1_CISN\r\n", "REMOTE Z1_TEMP srv@Z1_TEMP\r\n",
                            "REMOTE BILANS srv@BILANS\r\n"));
    EXPECT_THAT(tree.GetDeclarations({1, 2}, "srv"), IsEmpty());
    const SourceTree nameless(Variables({{"", "", "opis"}, {"A", "", ""}}), "");
    EXPECT_THAT(nameless.GetDeclarations({1, 2}, "srv"), ElementsAre("REMOTE A srv@A\r\n"));
}

TEST(SourceTreeTest, ManyVariablesAndAVeryDeepPathAreShown) {
    vantrel::CObjInfoList list;
    std::string deep;
    for (int level = 0; level < 30'000; ++level) deep += "g/";
    list.emplace_back(vantrel::VariableDefinition{"DEEP", {{"pa", deep}}});
    for (int number = 0; number < 50'000; ++number) {
        list.emplace_back(vantrel::VariableDefinition{
            "V" + std::to_string(number), {{"pa", "S" + std::to_string(number % 100) + "/P"}}});
    }
    EXPECT_EQ(SourceTree(list, "").GetCount(), 1 + 30'000 + 1 + 50'000 + 200);
    EXPECT_EQ(SourceTree(list, "V49999").GetCount(), 1 + 2 + 1);
}

}  // namespace
}  // namespace kalvex::workbench
