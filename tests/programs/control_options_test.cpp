#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "programs/kalvexctl/Options.h"
#include "text/CodePage.h"

namespace kalvex::programs {
namespace {

using testing::ElementsAre;

kalvexctl::ControlLine Parsed(std::vector<std::string> arguments) {
    kalvexctl::ControlLine line = kalvexctl::ParseControlLine(arguments);
    EXPECT_FALSE(line.ending) << line.ending->text;
    return line;
}

std::string Fault(std::vector<std::string> arguments) {
    const kalvexctl::ControlLine line = kalvexctl::ParseControlLine(arguments);
    EXPECT_TRUE(line.ending && line.ending->status == ExitRefused);
    return line.ending ? line.ending->text : "";
}

TEST(ControlOptionsTest, DefaultsAreThoseOfThePage) {
    const kalvexctl::ControlLine line = Parsed({"log"});
    EXPECT_TRUE(line.options.modules.empty());
    EXPECT_EQ(line.options.dir, ".");
    EXPECT_EQ(line.options.timeout, 5);
    EXPECT_EQ(line.options.wait, 2);
    EXPECT_EQ(line.order.command->name, "log");
    EXPECT_EQ(line.order.arguments.count, 100);
    EXPECT_EQ(line.order.arguments.mostLevel, 3);
    EXPECT_EQ(line.order.arguments.context, 10);
    EXPECT_FALSE(line.order.arguments.watch);
}

TEST(ControlOptionsTest, OptionsStandBeforeTheCommandOrBehindIt) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"-m", "A", "--force", "--wait", "0", "take", "a.kx"},
             {"take", "a.kx", "-mA", "--wait=0", "--force"},
             {"--module=A", "take", "--force", "a.kx", "--wait", "0"},
         }) {
        const kalvexctl::ControlLine line = Parsed(arguments);
        EXPECT_THAT(line.options.modules, ElementsAre("A"));
        EXPECT_EQ(line.options.wait, 0);
        EXPECT_TRUE(line.order.arguments.force);
        EXPECT_EQ(line.order.arguments.script, "a.kx");
    }
}

TEST(ControlOptionsTest, NegativeNumbersAreTexts) {
    for (const std::string text : {"-5", "-.5", "-0x1F", "-1e3", "-inf", "-"}) {
        EXPECT_EQ(Parsed({"set", "a.kx", "X", text}).order.arguments.text, text);
    }
    EXPECT_EQ(Fault({"set", "a.kx", "X", "-x"}), "unknown option -x");
    EXPECT_EQ(Parsed({"set", "--", "a.kx", "X", "-x"}).order.arguments.text, "-x");
}

TEST(ControlOptionsTest, LinesCountFromZeroInside) {
    EXPECT_EQ(Parsed({"break", "a.kx", "1"}).order.arguments.line, 0);
    EXPECT_EQ(Parsed({"unbreak", "a.kx", "2147483647"}).order.arguments.line, 2147483646);
    EXPECT_FALSE(Parsed({"unbreak", "a.kx"}).order.arguments.line);
    EXPECT_EQ(Fault({"break", "a.kx", "2147483648"}),
              "break: \"2147483648\" is not a whole number from 1 to 2147483647");
}

TEST(ControlOptionsTest, WatchHasANumberOrNone) {
    EXPECT_EQ(Parsed({"vars", "a.kx", "--watch"}).order.arguments.watch, 2);
    EXPECT_EQ(Parsed({"vars", "--watch", "a.kx"}).order.arguments.watch, 2);
    EXPECT_EQ(Parsed({"vars", "a.kx", "--watch", "7"}).order.arguments.watch, 7);
    EXPECT_EQ(Parsed({"vars", "--watch=7", "a.kx"}).order.arguments.watch, 7);
    EXPECT_EQ(Fault({"vars", "a.kx", "--watch", "0"}),
              "--watch: \"0\" is not a whole number from 1 to 86400");
}

TEST(ControlOptionsTest, NamesComeInAsEngineTexts) {
    const kalvexctl::ControlLine line = Parsed({"-m", "Wodociąg", "-u", "ŁUCJA", "stop", "ą.kx"});
    EXPECT_THAT(line.options.modules, ElementsAre(text::FromUtf8("Wodociąg")));
    EXPECT_EQ(line.options.user, text::FromUtf8("ŁUCJA"));
    EXPECT_EQ(line.order.arguments.script, text::FromUtf8("ą.kx"));
}

TEST(ControlOptionsTest, SeveralModulesAreForStatus) {
    EXPECT_THAT(Parsed({"status", "-m", "A", "-m", "B"}).options.modules, ElementsAre("A", "B"));
    EXPECT_EQ(Fault({"list", "-m", "A", "-m", "B"}), "list takes one module");
    EXPECT_EQ(Fault({"status", "-m", "A", "-m", "B", "--address", "a:1"}),
              "--address is one module's");
}

TEST(ControlOptionsTest, EveryCommandHasAHelpAndAHandler) {
    for (const kalvexctl::CommandRow& row : kalvexctl::CommandRows()) {
        EXPECT_NE(row.run, nullptr) << row.name;
        EXPECT_FALSE(std::string(row.help).empty()) << row.name;
    }
}

// ---- orders

TEST(ControlOptionsOrderTest, OrdersAreCommandsWithoutTheirScript) {
    const kalvexctl::OrderLine line = kalvexctl::ParseOrder("  unbreak\t7 ", "ą b.kx");
    ASSERT_FALSE(line.ending);
    EXPECT_EQ(line.order.command->name, "unbreak");
    EXPECT_EQ(line.order.arguments.script, "ą b.kx");
    EXPECT_EQ(line.order.arguments.line, 6);
}

TEST(ControlOptionsOrderTest, TextGoesToTheEndOfTheLine) {
    for (const std::string text : {"\"a  b\" ", "-x", "--json", "12 13"}) {
        const kalvexctl::OrderLine line = kalvexctl::ParseOrder("set  X  " + text, "a.kx");
        ASSERT_FALSE(line.ending) << text;
        EXPECT_EQ(line.order.arguments.variable, "X");
        EXPECT_EQ(line.order.arguments.text, text);
    }
    EXPECT_EQ(kalvexctl::ParseOrder("set X", "a.kx").ending->text, "set needs TEXT");
    EXPECT_EQ(kalvexctl::ParseOrder("set", "a.kx").ending->text, "set needs VAR");
}

TEST(ControlOptionsOrderTest, BlankLinesAreNone) {
    for (const std::string text : {"", "  ", "\t"}) {
        const kalvexctl::OrderLine line = kalvexctl::ParseOrder(text, "a.kx");
        EXPECT_EQ(line.order.command, nullptr);
        EXPECT_FALSE(line.ending);
    }
}

TEST(ControlOptionsOrderTest, OtherCommandsAreNoOrders) {
    for (const std::string name :
         {"list", "take", "open", "close", "reload", "log", "level", "why", "audit"}) {
        const kalvexctl::OrderLine line = kalvexctl::ParseOrder(name, "a.kx");
        ASSERT_TRUE(line.ending) << name;
        EXPECT_EQ(*line.ending,
                  (kalvexctl::Ending{ExitRefused, "there is no order \"" + name + '"'}));
    }
}

}  // namespace
}  // namespace kalvex::programs
