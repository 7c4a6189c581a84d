// The order and completeness of the two keyword tables.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "language/Directives.h"
#include "language/Functions.h"
#include "language/Statements.h"

namespace kalvex::language {
namespace {

using testing::ElementsAreArray;

template <class Rows>
std::vector<std::string> Keywords(const Rows& rows) {
    std::vector<std::string> keywords;
    for (const auto& row : rows) keywords.emplace_back(row.keyword);
    return keywords;
}

TEST(TablesTest, StatementsStandInTheOrderOfTheirTrial) {
    EXPECT_THAT(Keywords(Statements().Rows()), ElementsAreArray({
                                                   "PROCEDURE",
                                                   "BEGIN",
                                                   "END",
                                                   "LOCK",
                                                   "UNLOCK",
                                                   "IGNORE_UNKNOWN_ON",
                                                   "IGNORE_UNKNOWN_OFF",
                                                   "PRIORITY",
                                                   "SLEEP",
                                                   "WAITFOR",
                                                   "PING_INIT",
                                                   "FTP_INIT",
                                                   "HTTP_INIT",
                                                   "EXEC",
                                                   "TERMINATE_EXEC",
                                                   "CLOSE_EXEC",
                                                   "SETTIME",
                                                   "ENABLE_NOTIFY",
                                                   "DISABLE_NOTIFY",
                                                   "LOCAL",
                                                   "REMOTE",
                                                   "POINTER",
                                                   "LIST",
                                                   "COPY",
                                                   "CREATE_VAR_LIST",
                                                   "FILL_IN_LIST",
                                                   "CALC_IN_LIST",
                                                   "SUBSCRIBE",
                                                   "SETPTR",
                                                   "MOVE_FIRST",
                                                   "MOVE_NEXT",
                                                   "MOVE_TO",
                                                   "ADD",
                                                   "INSERT",
                                                   "REMOVE",
                                                   "REMOVE_ALL",
                                                   "REMOVEALL",
                                                   "SET",
                                                   "MPUT",
                                                   "MGET",
                                                   "GET",
                                                   "PUT",
                                                   "INIT",
                                                   "INIT_LOAD",
                                                   "INIT_LOAD_REFRESH",
                                                   "INIT_CALC",
                                                   "IF",
                                                   "ELSE",
                                                   "ENDIF",
                                                   "GOTO",
                                                   "CALL",
                                                   "READ_FILE",
                                                   "WRITE_FILE",
                                                   "SET_FILE",
                                                   "REMOVE_STATUS",
                                                   "ADD_STATUS",
                                                   "SET_STATUS",
                                                   "SPLIT",
                                               }));
}

TEST(TablesTest, FunctionsStandInTheOrderOfTheirTrial) {
    EXPECT_THAT(Keywords(Functions().Rows()), ElementsAreArray({
                                                  "STRING_COMPARE",
                                                  "STRING_COMPARE_NO_CASE",
                                                  "STRING_FIND_ONE_OF",
                                                  "STRING_REVERSE_FIND",
                                                  "STRING_FIND",
                                                  "TO_STRING",
                                                  "TO_FLOAT",
                                                  "TO_INT",
                                                  "STRING_LEN",
                                                  "STRING_MAKE_LOWER",
                                                  "STRING_MAKE_REVERSE",
                                                  "STRING_MAKE_UPPER",
                                                  "STRING_APPEND",
                                                  "STRING_SPAN_EXCLUDING",
                                                  "STRING_SPAN_INCLUDING",
                                                  "STRING_TRIM",
                                                  "STRING_TRIM_LEFT",
                                                  "STRING_TRIM_RIGHT",
                                                  "STRING_LEFT",
                                                  "STRING_RIGHT",
                                                  "STRING_MID",
                                                  "TOKENIZE",
                                                  "JOIN",
                                                  "PING_RESULT",
                                                  "FTP_RESULT",
                                                  "HTTP_RESULT",
                                                  "NOTIFY",
                                                  "NOTIFY_QUEUE_COUNT",
                                                  "NOTIFYING_QUEUE_SIZE",
                                                  "LAST_DAY",
                                                  "SIN",
                                                  "COS",
                                                  "TG",
                                                  "CTG",
                                                  "ARCSIN",
                                                  "ARCCOS",
                                                  "ARCTG",
                                                  "ARCCTG",
                                                  "SQR",
                                                  "SQRT",
                                                  "FACTORIAL",
                                                  "INT",
                                                  "ROUND",
                                                  "STATUS",
                                                  "SET_STATUS",
                                                  "ADD_STATUS",
                                                  "REMOVE_STATUS",
                                                  "READ_FILE",
                                                  "WRITE_FILE",
                                                  "SET_FILE",
                                                  "TIMESTAMP",
                                                  "FORMATED_TIMESTAMP",
                                                  "MAKE_TIME",
                                                  "MAKE_TIME_FROM_STRING",
                                                  "CHECK_EVENT_TIME",
                                                  "EXEC",
                                                  "CHECK_EXEC_ACTIVITY",
                                                  "GET_EXIT_CODE_EXEC",
                                                  "TERMINATE_EXEC",
                                                  "CLOSE_EXEC",
                                                  "SORVANE_USER_NAME",
                                                  "SORVANE_USER_DESCRIPTION",
                                                  "WINDOWS_USER_NAME",
                                                  "FILL_IN_LIST",
                                                  "CALC_IN_LIST",
                                              }));
}

// A directive is no statement: a line that reaches the run with one is an unknown keyword.
TEST(TablesTest, DirectivesStandApart) {
    ASSERT_THAT(Keywords(Directives()), ElementsAreArray({"INCLUDE", "INCLUDE_VAR"}));
    EXPECT_EQ(Directives()[0].usage, "INCLUDE <ścieżka_do_pliku_z_rozszerzeniem_kx>");
    EXPECT_EQ(Directives()[0].help, "Umożliwia wczytanie i wykonanie kodu z określonego pliku");
    EXPECT_EQ(Directives()[1].usage, "INCLUDE_VAR <nazwa_serwera> <filtr>");
    EXPECT_EQ(Directives()[1].help,
              "Wstawienie do skryptu (po jego uruchomieniu) deklaracji zmiennych dla podanego "
              "serwera spełniających sformułowane kryteria");
    for (const DirectiveRow& row : Directives()) {
        EXPECT_EQ(Statements().Find(row.keyword), nullptr);
        EXPECT_EQ(Functions().Find(row.keyword), nullptr);
    }
}

TEST(TablesTest, EveryKeywordIsFoundByItsSpelling) {
    for (const engine::StatementRow& row : Statements().Rows()) {
        EXPECT_EQ(Statements().Find(row.keyword), &row) << row.keyword;
        EXPECT_TRUE(row.handler);
        EXPECT_FALSE(row.usage.empty()) << row.keyword;
    }
    for (const operands::FunctionRow& row : Functions().Rows()) {
        EXPECT_EQ(Functions().Find(row.keyword), &row) << row.keyword;
        EXPECT_TRUE(row.handler);
        EXPECT_FALSE(row.help.empty()) << row.keyword;
    }
    EXPECT_EQ(Statements().Find("set"), nullptr);
    EXPECT_EQ(Functions().Find("sin"), nullptr);
    EXPECT_EQ(Functions().Find(""), nullptr);
}

}  // namespace
}  // namespace kalvex::language
