#include "server/CsvReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "text/Utf8.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;

// A row is its line, its cells with "|" between them, and "!" when it is not closed.
std::vector<std::string> RowsOf(const std::string& text, std::size_t mostCells = 9) {
    std::istringstream stream(text);
    CsvReader reader(stream, mostCells);
    std::vector<std::string> rows;
    for (CsvRow row; reader.Next(row);) {
        std::string& shown = rows.emplace_back(std::to_string(row.line) + ":");
        for (const std::string& cell : row.cells) shown += cell + '|';
        if (!row.closed) shown += '!';
    }
    return rows;
}

TEST(CsvReaderTest, RowsHaveTheirLines) {
    EXPECT_THAT(RowsOf("a,b\r\n\r\n# c,\"d\n 1 , 2 \n"), ElementsAre("1:a|b|", "4:1|2|"));
    EXPECT_THAT(RowsOf(std::string(text::kUtf8Mark) + "a;b\n1;2,3"),
                ElementsAre("1:a|b|", "2:1|2,3|"));
    EXPECT_THAT(RowsOf("a\tb\nx y\t\"1\t2\"\n"), ElementsAre("1:a|b|", "2:x y|1\t2|"));
    EXPECT_THAT(RowsOf(""), ElementsAre());
    EXPECT_THAT(RowsOf("\n \n#"), ElementsAre());
}

TEST(CsvReaderTest, QuotedCellHoldsLineEnds) {
    EXPECT_THAT(RowsOf("a,b\n\"1\r\n#2\n\n3\",4\n5,6\n"),
                ElementsAre("1:a|b|", "2:1\r\n#2\n\n3|4|", "6:5|6|"));
    EXPECT_THAT(RowsOf("a,b\n\"say \"\"x\n\"\"\",\"\"\n7,8\n"),
                ElementsAre("1:a|b|", "2:say \"x\n\"||", "4:7|8|"));
}

TEST(CsvReaderTest, QuoteWithinACellOpensNothing) {
    EXPECT_THAT(RowsOf("a,b\n5\" pipe,1\n2,3\n"), ElementsAre("1:a|b|", "2:5\" pipe|1|", "3:2|3|"));
}

TEST(CsvReaderTest, QuoteThatIsNotClosedIsTold) {
    EXPECT_THAT(RowsOf("a,b\n\"x\" y,1\n2,3\n"), ElementsAre("1:a|b|", "2:x|!", "3:2|3|"));
    EXPECT_THAT(RowsOf("a,b\n\"x,1\n2,3\n"), ElementsAre("1:a|b|", "2:|!"));
}

TEST(CsvReaderTest, RowThatIsTooLongEndsWithItsLine) {
    const std::string longest(kLongestCsvRow, 'x');
    EXPECT_THAT(RowsOf(longest + "\n1\n"), ElementsAre("1:" + longest + "|", "2:1|"));
    EXPECT_THAT(RowsOf(longest + "yz\n1\n"), ElementsAre("1:" + longest + "y|!", "2:1|"));
    const std::vector<std::string> rows = RowsOf("\"" + longest + "\n\n\"2\"\n");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[1], "3:2|");
}

TEST(CsvReaderTest, OneCellTooManyShowsThatThereWasMore) {
    EXPECT_THAT(RowsOf("a,b,c,d\n", 2), ElementsAre("1:a|b|c|"));
}

TEST(CsvReaderTest, WrittenCellsAreReadAsTheyWere) {
    const std::vector<std::string> texts = {
        "",     "x",     "a b",       " a", "a ",   "\ta",  "#a",  "a#", "a,b", "a;b", "a\tb",
        "a\nb", "a\r\n", "say \"x\"", "\"", "\"\"", "12,5", "a\r", "-",  "ż",   "a\vb"};
    for (const char separator : {',', ';', '\t'}) {
        const std::string glue(1, separator);
        std::string file = "h" + glue + "i\r\n";
        for (const std::string& text : texts) file += CsvCell(text) + glue + CsvCell(text) + "\r\n";
        std::istringstream stream(file);
        CsvReader reader(stream, 2);
        CsvRow row;
        ASSERT_TRUE(reader.Next(row));
        for (const std::string& text : texts) {
            if (text.empty() && separator == '\t') continue;  // a row of blanks alone is none
            ASSERT_TRUE(reader.Next(row));
            EXPECT_THAT(row.cells, ElementsAre(text, text));
            EXPECT_TRUE(row.closed);
        }
        EXPECT_FALSE(reader.Next(row));
    }
    EXPECT_EQ(CsvCell("a b"), "a b");
    EXPECT_EQ(CsvCell("#a"), "\"#a\"");
}

}  // namespace
}  // namespace kalvex::server
