// The manual names whatever the tables hold.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "language/Directives.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "operands/Conditions.h"
#include "operands/OperandEvaluator.h"
#include "operands/PropertyNames.h"
#include "operands/Schedule.h"
#include "operands/ScriptErrors.h"
#include "operands/TimeProperties.h"
#include "platform/Files.h"
#include "value/Status.h"

namespace kalvex::language {
namespace {

class ManualTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(platform::ReadWholeFile(KALVEX_MANUAL, text, error)) << error;
        const std::size_t end = text.find("\n## Index\n");
        ASSERT_NE(end, std::string::npos);
        index = text.substr(end);
        text.resize(end);
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with("### ")) continue;
            std::istringstream words(line.substr(4));
            for (std::string word; words >> word;) {
                if (word.ends_with(',')) word.pop_back();
                entries.insert(word);
            }
        }
    }

    bool Mentions(std::string_view word) const { return text.find(word) != std::string::npos; }

    void ExpectIndexed(std::string_view word) const {
        EXPECT_NE(index.find("[`" + std::string(word) + "`](#"), std::string::npos) << word;
    }

    std::string text;   // ahead of the index
    std::string index;  // a link each: [`WORD`](#place)
    std::set<std::string, std::less<>> entries;
};

TEST_F(ManualTest, HasAnEntryForEveryStatement) {
    for (const engine::StatementRow& row : Statements().Rows()) {
        EXPECT_TRUE(entries.contains(row.keyword)) << row.keyword;
    }
}

TEST_F(ManualTest, HasAnEntryForEveryDirective) {
    for (const DirectiveRow& row : Directives()) {
        EXPECT_TRUE(entries.contains(row.keyword)) << row.keyword;
    }
}

TEST_F(ManualTest, HasAnEntryForEveryKeywordFunction) {
    for (const operands::FunctionRow& row : Functions().Rows()) {
        EXPECT_TRUE(entries.contains(row.keyword)) << row.keyword;
    }
}

TEST_F(ManualTest, ListsEveryErrorWithItsMessage) {
    for (int code = 0; const operands::ScriptErrorRow* row = operands::FindScriptError(code);
         ++code) {
        const std::string start = "| " + std::to_string(code) + " | " + row->text + " |";
        EXPECT_TRUE(Mentions(start)) << start;
    }
}

TEST_F(ManualTest, NamesEveryPropertyKindStatusAndTestWord) {
    for (const operands::VariablePropertyRow& row : operands::VariableProperties()) {
        EXPECT_TRUE(Mentions("`" + std::string(row.name) + "`")) << row.name;
    }
    for (const operands::TimeProperty& row : operands::TimeProperties()) {
        EXPECT_TRUE(Mentions("`" + std::string(row.name) + "`")) << row.name;
    }
    for (const value::ValueKindRow& row : value::ValueKinds()) {
        EXPECT_TRUE(Mentions("`." + std::string(row.suffix) + "`")) << row.suffix;
    }
    for (const value::StatusWord& row : value::StatusWords()) {
        EXPECT_TRUE(Mentions("`" + std::string(row.word) + "`")) << row.word;
    }
    for (const operands::ConditionWordRow& row : operands::ConditionWords()) {
        EXPECT_TRUE(Mentions("`" + std::string(row.word) + " <")) << row.word;
    }
}

TEST_F(ManualTest, IndexHasEveryWordOfTheTables) {
    for (const engine::StatementRow& row : Statements().Rows()) ExpectIndexed(row.keyword);
    for (const DirectiveRow& row : Directives()) ExpectIndexed(row.keyword);
    for (const operands::FunctionRow& row : Functions().Rows()) ExpectIndexed(row.keyword);
    for (const std::string_view name : operands::VariablePropertyNames()) ExpectIndexed(name);
    for (const std::string_view name : operands::ListPropertyNames()) ExpectIndexed(name);
    for (const auto& row : operands::ScheduleWords()) ExpectIndexed(row.word);
    for (const operands::TimeProperty& row : operands::TimeProperties()) ExpectIndexed(row.name);
    for (const value::ValueKindRow& row : value::ValueKinds()) ExpectIndexed(row.suffix);
    for (const value::StatusWord& row : value::StatusWords()) ExpectIndexed(row.word);
    for (const auto& row : operands::ConditionWords()) ExpectIndexed(row.word);
}

}  // namespace
}  // namespace kalvex::language
