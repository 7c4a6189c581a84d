// Every row of every table of the language stands in the help in the terminal, on the manual page
// and on the card.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "language/Directives.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "operands/Conditions.h"
#include "operands/FormulaOperators.h"
#include "operands/Operand.h"
#include "operands/PropertyNames.h"
#include "operands/Schedule.h"
#include "operands/ScriptErrors.h"
#include "operands/TimeProperties.h"
#include "programs/glossary/CardText.h"
#include "programs/glossary/LanguageHelp.h"
#include "programs/glossary/ManualPage.h"
#include "text/CodePage.h"
#include "value/Status.h"
#include "workbench/model/KeywordHelp.h"

namespace kalvex::glossary {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using Strings = std::vector<std::string>;

struct Paragraph {
    Strings tags;
    std::string text;
};

// What a table has of a word.
struct Row {
    std::string word;
    Strings tags;           // as the page and the card have it
    std::string help = {};  // empty where another table may tell it
};
using Rows = std::vector<Row>;

Strings LinesOf(std::string_view text) {
    Strings lines;
    std::istringstream stream{std::string(text)};
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

Strings CutAt(std::string_view separator, std::string_view text) {
    Strings parts;
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end, text.size() - separator.size()) + separator.size());
    }
    return parts;
}

std::string InCapitals(const std::string& utf8) {
    return text::ToUtf8(text::ToUpper(text::FromUtf8(utf8)));
}

// A text of the page as it is read.
std::string Read(std::string_view written) {
    const std::map<std::string_view, std::string_view> signs = {
        {"\\-", "-"}, {"\\e", "\\"}, {"\\&", ""}, {"\\(ha", "^"}, {"\\(ti", "~"}, {"\\(dq", "\""}};
    std::string read;
    while (!written.empty()) {
        const std::size_t length = written[0] != '\\'  ? 1
                                   : written[1] == '[' ? written.find(']') + 1
                                   : written[1] == '(' ? 4
                                                       : 2;
        const std::string_view sign = written.substr(0, length);
        written.remove_prefix(length);
        if (sign.starts_with("\\[u")) {
            const int code = std::stoi(std::string(sign.substr(3)), nullptr, 16);
            read += static_cast<char>(0xC0 | code >> 6);
            read += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            read += sign.size() == 1 ? sign : signs.at(sign);
        }
    }
    return read;
}

class GlossaryTest : public testing::Test {
  protected:
    GlossaryTest() {
        ReadList();
        ReadCard();
        ReadPage();
    }

    // In the list, each line of a section; on the page its paragraphs; on the card its lines.
    const std::vector<Section> glossary = MakeGlossary(platform::Translator());
    const LanguageHelp help{glossary};
    std::map<std::string, Strings> list;
    std::map<std::string, Strings> card;
    std::map<std::string, std::vector<Paragraph>> page;
    Strings listHeadings;
    Strings cardHeadings;
    Strings pageHeadings;

    Strings ListedWords(const std::string& heading) {
        Strings words;
        for (const std::string& line : list[heading])
            words.push_back(line.substr(0, line.find(' ')));
        return words;
    }

    Strings CardWords(const std::string& heading) {
        Strings words;
        for (const std::string& line : card[heading]) {
            for (const std::string& word : CutAt("  ", line)) words.push_back(word);
        }
        return words;
    }

    // Where each tag is a form.
    void ExpectForms(const std::string& heading, const Rows& rows) {
        ExpectInTheTerminal(heading, rows);
        ExpectPurposesOnThePage(heading, rows);
        Strings tags;
        Strings read;
        for (const Row& row : rows) tags.insert(tags.end(), row.tags.begin(), row.tags.end());
        for (const Paragraph& one : page[InCapitals(heading)]) {
            read.insert(read.end(), one.tags.begin(), one.tags.end());
        }
        EXPECT_THAT(read, ElementsAreArray(tags));
        std::ranges::sort(tags);
        EXPECT_THAT(card[heading], ElementsAreArray(tags));
    }

    // Where each row has one tag, and on the page maybe forms behind it.
    void ExpectWords(const std::string& heading, const Rows& rows) {
        ExpectInTheTerminal(heading, rows);
        ExpectPurposesOnThePage(heading, rows);
        ExpectLabels(heading, rows, CardWords(heading));
    }

    // Where page and card have a line for each row, and no more.
    void ExpectLines(const std::string& heading, const Rows& rows) {
        ExpectInTheTerminal(heading, rows);
        ExpectLabels(heading, rows, card[heading]);
    }

    void ExpectLabels(const std::string& heading, const Rows& rows, const Strings& onTheCard) {
        Strings labels;
        Strings read;
        for (const Row& row : rows) labels.push_back(row.tags.front());
        for (const Paragraph& one : page[InCapitals(heading)]) read.push_back(one.tags.front());
        EXPECT_THAT(read, ElementsAreArray(labels));
        EXPECT_THAT(onTheCard, ElementsAreArray(labels));
    }

  private:
    void ExpectInTheTerminal(const std::string& heading, const Rows& rows) {
        ASSERT_FALSE(rows.empty());
        Strings words;
        for (const Row& row : rows) words.push_back(row.word);
        ASSERT_THAT(ListedWords(heading), ElementsAreArray(words));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            EXPECT_FALSE(help.TextOf(rows[i].word).empty()) << rows[i].word;
            if (rows[i].help.empty()) continue;
            EXPECT_EQ(list[heading][i], fmt::format("{:<26}{}", rows[i].word, rows[i].help));
        }
    }

    void ExpectPurposesOnThePage(const std::string& heading, const Rows& rows) {
        const std::vector<Paragraph>& paragraphs = page[InCapitals(heading)];
        ASSERT_EQ(paragraphs.size(), rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (rows[i].help.empty()) continue;
            EXPECT_EQ(paragraphs[i].text, rows[i].help + '.') << rows[i].word;
        }
    }

    void ReadList() {
        for (const std::string& line : LinesOf(help.List())) {
            if (line.starts_with("  ")) {
                list[listHeadings.back()].push_back(line.substr(2));
            } else if (!line.empty()) {
                listHeadings.push_back(line);
            }
        }
    }

    void ReadCard() {
        for (const std::string& line : LinesOf(CardText(glossary))) {
            if (line.starts_with("## ")) {
                cardHeadings.push_back(line.substr(3));
            } else if (!cardHeadings.empty() && !line.empty() && line != "```") {
                card[cardHeadings.back()].push_back(line);
            }
        }
    }

    void ReadPage() {
        const std::string text = ManualPage(glossary, "1.2", "2026-01-02");
        bool isTag = false;
        for (const std::string& line : LinesOf(text)) {
            if (line.starts_with(".SH ")) {
                pageHeadings.push_back(Read(line.substr(4)));
                isTag = false;
                continue;
            }
            if (pageHeadings.empty()) continue;
            std::vector<Paragraph>& paragraphs = page[pageHeadings.back()];
            if (line == ".TP") paragraphs.emplace_back();
            if (line.starts_with(".B \"")) {
                paragraphs.back().tags.push_back(Read(line.substr(4, line.size() - 5)));
            } else if (line.starts_with("\\&") && isTag) {
                paragraphs.back().text = Read(line);
            } else if (line.starts_with("\\&")) {
                paragraphs.push_back({{Read(line)}, {}});
            }
            isTag = line.starts_with(".B ");
        }
    }
};

template <class Table>
Rows WithUsage(const Table& table) {
    Rows rows;
    for (const auto& row : table) {
        rows.push_back({std::string(row.keyword), CutAt("\n", row.usage), std::string(row.help)});
    }
    return rows;
}

TEST_F(GlossaryTest, SectionsStandInOneOrder) {
    const Strings headings = {
        "Instrukcje",
        "Dyrektywy",
        "Funkcje",
        "Operatory formuł, od najsilniej wiążących",
        "Warunki instrukcji IF",
        "Właściwości zmiennych",
        "Właściwości list i wskaźników",
        "Właściwości czasu",
        "Typy danych",
        "Słowa harmonogramu",
        "Statusy",
        "Inne słowa",
        "Błędy skryptu",
    };
    EXPECT_THAT(cardHeadings, ElementsAreArray(headings));

    Strings onThePage = {"NAME", "DESCRIPTION"};
    std::ranges::transform(headings, std::back_inserter(onThePage), InCapitals);
    onThePage.emplace_back("SEE ALSO");
    EXPECT_THAT(pageHeadings, ElementsAreArray(onThePage));

    Strings inTheTerminal = headings;
    std::erase(inTheTerminal, "Operatory formuł, od najsilniej wiążących");
    EXPECT_THAT(listHeadings, ElementsAreArray(inTheTerminal));
}

TEST_F(GlossaryTest, ShowsEveryStatement) {
    ExpectForms("Instrukcje", WithUsage(language::Statements().Rows()));
}

TEST_F(GlossaryTest, ShowsEveryDirective) {
    ExpectForms("Dyrektywy", WithUsage(language::Directives()));
}

TEST_F(GlossaryTest, ShowsEveryFunctionWithItsArguments) {
    Rows rows = WithUsage(language::Functions().Rows());
    for (Row& row : rows) {
        for (std::string& tag : row.tags) tag = tag.empty() ? row.word : row.word + ' ' + tag;
    }
    ExpectForms("Funkcje", rows);
}

TEST_F(GlossaryTest, ShowsEveryOperatorOfFormulasByItsLevel) {
    std::map<int, Strings> levels;
    for (const operands::FormulaOperator& row : operands::FormulaOperators()) {
        if (row.text == "TG") continue;
        levels[-row.binding].push_back(row.text == "P" ? "-x"
                                       : row.function  ? std::string(row.text) + "()"
                                                       : std::string(row.text));
    }
    Rows rows;
    for (const auto& [level, words] : levels) {
        const std::string line = fmt::format("{}", fmt::join(words, "  "));
        rows.push_back({line, {line}});
    }
    const std::string heading = "Operatory formuł, od najsilniej wiążących";
    ExpectLabels(heading, rows, card[heading]);
    EXPECT_EQ(rows.front().word,
              "#  -x  NOT()  SIN()  COS()  CTG()  ARCSIN()  ARCCOS()  ARCTG()  ARCCTG()  SQRT()  "
              "SQR()  INT()  ROUND()  FACTORIAL()");
    EXPECT_EQ(rows.back().word, "!  ~");
}

TEST_F(GlossaryTest, ShowsEveryCondition) {
    const std::map<std::string_view, std::string> forms = {
        {"SET_BY_USER", "SET_BY_USER <zmienna>[.<typ_danych>]"},
        {"UNKNOWN", "UNKNOWN <zmienna>[.<typ_danych>]"},
        {"READY", "READY <zmienna>.<typ_danych>"},
        {"REP_INITED", "REP_INITED <zmienna>.<typ_danych>"},
        {"REP_LOADED", "REP_LOADED <zmienna>.<typ_danych>"},
    };
    Rows rows;
    for (const operands::ConditionWordRow& row : operands::ConditionWords()) {
        rows.push_back({std::string(row.word), {forms.at(row.word)}, std::string(row.help)});
    }
    ExpectForms("Warunki instrukcji IF", rows);
}

TEST_F(GlossaryTest, ShowsEveryPropertyOfVariables) {
    Rows rows;
    for (const operands::VariablePropertyRow& row : operands::VariableProperties()) {
        rows.push_back({std::string(row.name), {std::string(row.name)}, std::string(row.help)});
    }
    rows.push_back({".TIMESTAMP", {".TIMESTAMP"}, "Znacznik czasowy zmiennej"});
    ExpectWords("Właściwości zmiennych", rows);
}

TEST_F(GlossaryTest, ShowsEveryPropertyOfListsAndPointersWithItsForm) {
    Rows rows;
    for (const std::string_view name : operands::ListPropertyNames()) {
        rows.push_back({std::string(name), {std::string(name)}});
    }
    const std::string heading = "Właściwości list i wskaźników";
    ExpectWords(heading, rows);
    EXPECT_THAT(page[InCapitals(heading)].front().tags,
                ElementsAre(".BASENAME", "<wskaźnik>.BASENAME"));
    EXPECT_EQ(list[heading].back(), ".AVERAGE                  Średnia elementów listy");
}

TEST_F(GlossaryTest, ShowsEveryPropertyOfTimes) {
    Rows rows;
    for (const operands::TimeProperty& row : operands::TimeProperties()) {
        rows.push_back({std::string(row.name), {std::string(row.name)}, std::string(row.help)});
    }
    ExpectWords("Właściwości czasu", rows);
}

TEST_F(GlossaryTest, ShowsEveryKindOfDataWithItsDot) {
    Rows rows;
    for (const value::ValueKindRow& row : value::ValueKinds()) {
        const std::string word(row.suffix);
        rows.push_back({word, {'.' + word}, std::string(row.help)});
    }
    ExpectWords("Typy danych", rows);
}

TEST_F(GlossaryTest, ShowsEveryWordOfTheSchedule) {
    Rows rows;
    for (const operands::ScheduleWord& row : operands::ScheduleWords()) {
        rows.push_back({std::string(row.word), {std::string(row.word)}});
    }
    ExpectWords("Słowa harmonogramu", rows);
}

TEST_F(GlossaryTest, ShowsEveryStatusWithItsNumber) {
    Rows rows;
    for (const value::StatusWord& row : value::StatusWords()) {
        const std::string word(row.word);
        rows.push_back({word, {std::to_string(row.bit) + ' ' + word}, "Status zmiennej"});
    }
    ExpectLines("Statusy", rows);
}

TEST_F(GlossaryTest, ShowsEveryErrorWithItsText) {
    Rows rows;
#define KALVEX_ROW(code, name, text, translated) rows.push_back({#code, {#code " " text}, text});
    KALVEX_SCRIPT_ERRORS(KALVEX_ROW)
#undef KALVEX_ROW
    ExpectLines("Błędy skryptu", rows);
}

TEST_F(GlossaryTest, ShowsWordsThatOnlyTheWindowExplains) {
    for (const std::string_view word : workbench::HelpKeywords()) {
        EXPECT_FALSE(help.TextOf(word).empty()) << word;
    }
    const Rows rows = {{"FROM", {"FROM"}},
                       {"GETDATA", {"GETDATA"}},
                       {"NOT", {"NOT"}},
                       {"START", {"START"}},
                       {"STOP", {"STOP"}},
                       {"THEN", {"THEN"}},
                       {"TIME", {"TIME"}, "Bieżący czas"},
                       {"TO", {"TO"}}};
    ExpectWords("Inne słowa", rows);
}

TEST_F(GlossaryTest, PageTellsWhichVersionItIsOf) {
    EXPECT_EQ(LinesOf(ManualPage({}, "1.2", "2026-01-02")).front(),
              R"(.TH KALVEX\-LANGUAGE 7 "2026-01-02" "Kalvex 1.2" "Kalvex")");
}

TEST_F(GlossaryTest, SignsOfTheFormatterAreWrittenOut) {
    const std::vector<Section> own = {
        {"a-ż", "", Layout::Lines, {{"", "^ ~ \\ \" ó"}}},
        {"b", "", Layout::Forms, {{"", "", {"\"x\""}, ".y"}}},
    };
    const Strings lines = LinesOf(ManualPage(own, "", ""));
    const auto first = std::ranges::find(lines, R"(.SH A\-\[u017B])");
    ASSERT_GE(lines.end() - first, 7);
    EXPECT_THAT(Strings(first, first + 7),
                ElementsAre(R"(.SH A\-\[u017B])", R"(\&\(ha \(ti \e \(dq \[u00F3])", ".br", ".SH B",
                            ".TP", R"(.B "\(dqx\(dq")", R"(\&.y.)"));
}

}  // namespace
}  // namespace kalvex::glossary
