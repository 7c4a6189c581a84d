#include "app/CmdLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Warnings(const CCmdLine& line) {
    std::vector<std::string> warnings = line.GetWarnings(platform::Translator());
    std::ranges::transform(warnings, warnings.begin(), text::ToUtf8);
    return warnings;
}

TEST(CmdLineTest, NumberStandsBehindAColonAnEqualsSignOrABlank) {
    const std::vector<std::vector<std::string>> forms = {
        {"/D:5"}, {"/D=5"}, {"/D", "5"}, {"-D:5"}, {"-D=5"}, {"-D", "5"}, {"/d:5"}, {"-d", "5"}};
    for (const std::vector<std::string>& arguments : forms) {
        const CCmdLine line(arguments);
        EXPECT_EQ(line.GetIntOption("D"), 5) << arguments[0];
        EXPECT_THAT(Warnings(line), IsEmpty()) << arguments[0];
    }
}

TEST(CmdLineTest, TextKeepsItsSigns) {
    EXPECT_EQ(CCmdLine({"/U:jan:haslo"}).GetStringOption("U"), "jan:haslo");
    EXPECT_EQ(CCmdLine({"-u=jan:ha=s lo"}).GetStringOption("U"), "jan:ha=s lo");
    EXPECT_EQ(CCmdLine({"/U", "-jan:/haslo"}).GetStringOption("U"), "-jan:/haslo");
}

TEST(CmdLineTest, FlagTakesNoArgument) {
    const CCmdLine line({"/nologin", "/Q", "-RC"});
    EXPECT_TRUE(line.HasOption("NOLOGIN"));
    EXPECT_TRUE(line.HasOption("Q"));
    EXPECT_TRUE(line.HasOption("RC"));
    EXPECT_FALSE(line.HasOption("C"));
    EXPECT_EQ(CCmdLine({"/Q", "5"}).GetStringOption("Q"), "");
}

TEST(CmdLineTest, QuestionMarkIsAnOption) {
    EXPECT_TRUE(CCmdLine({"/?"}).HasOption("?"));
    EXPECT_TRUE(CCmdLine({"-?"}).HasOption("?"));
}

TEST(CmdLineTest, OptionThatIsNotGivenHasNoValue) {
    const CCmdLine line({"/D:5"});
    EXPECT_EQ(line.GetStringOption("U"), std::nullopt);
    EXPECT_EQ(line.GetIntOption("INST"), std::nullopt);
}

TEST(CmdLineTest, OptionAtTheEndMayLackItsValue) {
    const CCmdLine line({"/D"});
    EXPECT_EQ(line.GetStringOption("D"), "");
    EXPECT_EQ(line.GetIntOption("D"), std::nullopt);
}

TEST(CmdLineTest, WhatIsNoWholeNumberHasNoValueAsOne) {
    for (const char* argument : {"/D:", "/D:x", "/D:5x", "/D: 5", "/D:99999999999", "/D:1.5"}) {
        EXPECT_EQ(CCmdLine({argument}).GetIntOption("D"), std::nullopt) << argument;
    }
    EXPECT_EQ(CCmdLine({"/D:-5"}).GetIntOption("D"), -5);
}

TEST(CmdLineTest, LastOfTwoCounts) {
    EXPECT_EQ(CCmdLine({"/D:5", "-d", "7"}).GetIntOption("D"), 7);
}

TEST(CmdLineTest, WhatIsUnknownIsNamedInOneLineAndPassedOver) {
    const CCmdLine line({"/Y:1", "plik.txt", "-", "/D:5", "-żółw"});
    EXPECT_THAT(Warnings(line),
                ElementsAre("Pominięte parametry wiersza poleceń: /Y:1 plik.txt - -żółw"));
    EXPECT_EQ(line.GetIntOption("D"), 5);
}

TEST(CmdLineTest, ScriptsAreKeptInTheirOrder) {
    const CCmdLine line({"b.kx", "/D", "5", "a.Kx", "/dom/c.KX", "/U", "jan.kx"});
    EXPECT_THAT(line.GetScripts(), ElementsAre("b.kx", "a.Kx", "/dom/c.KX"));
    EXPECT_EQ(line.GetStringOption("U"), "jan.kx");
    EXPECT_THAT(Warnings(line), testing::IsEmpty());
}

TEST(CmdLineTest, ProgramThatOpensNoScriptsPassesThemOver) {
    CCmdLine line({"b.kx", "/Y", "a.kx"});
    line.PassOverScripts();
    EXPECT_THAT(line.GetScripts(), testing::IsEmpty());
    EXPECT_THAT(Warnings(line), ElementsAre("Pominięte parametry wiersza poleceń: /Y b.kx a.kx"));
}

TEST(CmdLineTest, StrangerIsWhatHasNoFormOfAnOption) {
    for (const char* argument : {"status", "--kolor", "-y", "-", "", "2"}) {
        EXPECT_EQ(CCmdLine({"/ZZ", "/D:5", argument, "obcy"}).FindStranger(), argument);
    }
    EXPECT_EQ(CCmdLine({"/ZZ:1", "/srv/plik", "-d", "5", "-INST", "abc", "/U", "jan:x", "-q", "-?"})
                  .FindStranger(),
              std::nullopt);
}

TEST(CmdLineTest, ScriptIsAStrangerToAProgramThatOpensNone) {
    CCmdLine line({"a.kx"});
    EXPECT_EQ(line.FindStranger(), std::nullopt);
    line.PassOverScripts();
    EXPECT_EQ(line.FindStranger(), "a.kx");
}

TEST(CmdLineTest, ScriptEndsInItsLettersWithANameBefore) {
    for (const char* name : {"a.kx", "a.KX", "a.kX", "/x/.a.kx"}) {
        EXPECT_TRUE(CCmdLine::IsScript(name)) << name;
    }
    for (const char* name : {".kx", "kx", "akx", "a.kxx", "a.kx ", ""}) {
        EXPECT_FALSE(CCmdLine::IsScript(name)) << name;
    }
}

TEST(CmdLineTest, NumberThatIsNoneIsNamedAsItIsWritten) {
    const std::string told = "Pominięte parametry wiersza poleceń, które wymagają liczby: ";
    EXPECT_THAT(Warnings(CCmdLine({"/INST:abc"})), ElementsAre(told + "/INST:abc"));
    EXPECT_THAT(Warnings(CCmdLine({"-d", "5x", "/X=", "/INST:2"})),
                ElementsAre(told + "-d 5x /X="));
    EXPECT_THAT(Warnings(CCmdLine({"/INST"})), ElementsAre(told + "/INST"));
    EXPECT_THAT(Warnings(CCmdLine({"/D:99999999999", "/ZZ"})),
                ElementsAre("Pominięte parametry wiersza poleceń: /ZZ", told + "/D:99999999999"));
}

TEST(CmdLineTest, HelpHasALineForEachOption) {
    EXPECT_EQ(text::ToUtf8(CCmdLine::GetHelp(platform::Translator())),
              "/?            lista parametrów\n"
              "/RC           zdalna konsola działającego modułu\n"
              "/D:liczba     opóźnienie autostartu w sekundach\n"
              "/X:liczba     poziom uprawnień od 0 do 100\n"
              "/C            nie jest wspierana, zastępuje ją INST\n"
              "/INST:liczba  numer instancji\n"
              "/NOLOGIN      autostart bez logowania\n"
              "/U:tekst      logowanie: użytkownik:hasło\n"
              "/Q            pytanie przed zamknięciem\n"
              "/P            bez znaczenia\n"
              "/MIRROR       bez znaczenia\n");
}

}  // namespace
}  // namespace kalvex::app
