#include "host/LinkTests.h"

#include <gmock/gmock.h>

#include "host/link_world.h"
#include "operands/OperandEvaluator.h"
#include "support/allocation_count.h"

namespace kalvex::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LinkTestsTest : public LinkWorld {};

TEST_F(LinkTestsTest, NoTestOfAnAddressIsUnknown) {
    LinkTests tests(services);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a"), -101);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ftp, "a"), -101);
    EXPECT_EQ(tests.TakeResult(LinkKind::Http, "a"), -101);
}

TEST_F(LinkTestsTest, ResultIsTakenOnce) {
    probes.pings["a"] = 0;
    LinkTests tests(services);
    tests.Start(LinkKind::Ping, Address("a"));
    probes.WaitForFinished(1);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "b"), -101);
    EXPECT_EQ(tests.TakeResult(LinkKind::Http, "a"), -101);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a"), 0);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a"), -101);
}

TEST_F(LinkTestsTest, NewestFinishedTestGivesTheResultAndTheOlderGo) {
    LinkTests tests(services);
    probes.pings["a"] = 7;
    tests.Start(LinkKind::Ping, Address("a"));
    probes.WaitForFinished(1);
    probes.pings["a"] = 9;
    tests.Start(LinkKind::Ping, Address("a"));
    tests.Start(LinkKind::Ping, Address("b"));
    probes.WaitForFinished(3);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a"), 9);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a"), -101);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "b"), 0);
}

TEST_F(LinkTestsTest, RunningTestHidesAFinishedOneWhichIsLost) {
    LinkTests tests(services);
    probes.pings["czeka"] = 5;
    probes.Release();
    tests.Start(LinkKind::Ping, Address("czeka"));
    probes.WaitForFinished(1);
    PlayedProbes held;
    services.probes = &held;
    held.pings["czeka"] = 6;
    tests.Start(LinkKind::Ping, Address("czeka"));
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "czeka"), -100);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "czeka"), -100);
    held.Release();
    held.WaitForFinished(1);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "czeka"), 6);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "czeka"), -101);
}

TEST_F(LinkTestsTest, ThreadThatCannotBeStartedLeavesNoTrace) {
    probes.refusesThreads = true;
    EXPECT_EQ(Run({"PING_INIT \"a\"", "LOCAL r = PING_RESULT \"a\""}), "done");
    EXPECT_EQ(Typed("r"), "150:-101");
}

TEST_F(LinkTestsTest, ProcessWithoutProbesStartsNothing) {
    services.probes = &platform::NoProbes();
    EXPECT_EQ(Run({"HTTP_INIT \"a\"", "LOCAL r = HTTP_RESULT \"a\""}), "done");
    EXPECT_EQ(Text("r"), "-101");
}

TEST_F(LinkTestsTest, WorkersBearTheirNamesAndNumbers) {
    LinkTests tests(services);
    LinkTarget ftp = Address("f");
    ftp.user = "u";
    tests.Start(LinkKind::Ping, Address("p"));
    probes.WaitForFinished(1);
    tests.Start(LinkKind::Ftp, ftp);
    probes.WaitForFinished(2);
    tests.Start(LinkKind::Http, Address("h"));
    probes.WaitForFinished(3);
    EXPECT_THAT(probes.Notes(), ElementsAre("ExecutePingThread 102: ping p 0",
                                            "ExecuteFtpConnectionThread 103: session",
                                            "ExecuteHttpConnectionThread 104: connect h 0"));
}

TEST_F(LinkTestsTest, DocumentWaitsForItsTests) {
    EXPECT_EQ(Run({"PING_INIT \"czeka\"", "PING_INIT \"a\"", "HTTP_INIT \"a\""}), "done");
    std::thread lets = platform::StartThread({"Lets", 1}, [this] {
        probes.WaitForFinished(2);
        probes.Release();
    });
    ticks.Remove(*documents.back());
    documents.clear();
    EXPECT_EQ(probes.Finished(), 3);
    lets.join();
}

TEST_F(LinkTestsTest, ResultOutlivesAReset) {
    probes.pings["a"] = 12;
    EXPECT_EQ(Run({"PING_INIT \"a\""}), "done");
    probes.WaitForFinished(1);
    engine::CKalvexDoc& script = *documents.back();
    WriteFile("main.kx", "LOCAL r = PING_RESULT \"a\"");
    script.Reset();
    script.Start();
    Finish();
    EXPECT_EQ(Text("r"), "12");
}

TEST_F(LinkTestsTest, PingTakesATimeoutBehindTheColon) {
    EXPECT_EQ(Run({"PING_INIT \"a\"", "PING_INIT \"a:1000\"", "PING_INIT \"a: 20x\"",
                   "PING_INIT \"a:x\"", "PING_INIT \"a:-1\"", "PING_INIT \"a:99999999999\"",
                   "PING_INIT \":5\"", "PING_INIT \"a:+7:8\""}),
              "done");
    probes.WaitForFinished(8);
    EXPECT_THAT(
        probes.Notes(),
        testing::UnorderedElementsAre(
            "ExecutePingThread 102: ping a 5000", "ExecutePingThread 102: ping a 1000",
            "ExecutePingThread 102: ping a 20", "ExecutePingThread 102: ping a 0",
            "ExecutePingThread 102: ping a 4294967295", "ExecutePingThread 102: ping a 2147483647",
            "ExecutePingThread 102: ping :5 5000", "ExecutePingThread 102: ping a 7"));
}

TEST_F(LinkTestsTest, ResultsOfPingAndHttpAreCutAtTheColonAndThatOfFtpIsNot) {
    probes.pings["a"] = 3;
    EXPECT_EQ(
        Run({"PING_INIT \"a:1000\"", "HTTP_INIT \"a\"", "HTTP_INIT \"b:80\"", "FTP_INIT \"a:21\""}),
        "done");
    probes.WaitForFinished(4);
    engine::CKalvexDoc& script = *documents.back();
    const auto value = [&script](std::string_view expression) {
        value::CVal out;
        EXPECT_TRUE(operands::EvaluateExpression(script, expression, out, value::ValueType::Int))
            << expression;
        return value::ValueToInt(out);
    };
    EXPECT_EQ(value("PING_RESULT \"a:9\""), 3);
    EXPECT_EQ(value("HTTP_RESULT \"a:9\""), 1);
    EXPECT_EQ(value("HTTP_RESULT \"b:80\""), -101);
    EXPECT_EQ(value("FTP_RESULT \"a\""), -101);
    EXPECT_EQ(value("FTP_RESULT \"a:21\""), -4);
    EXPECT_EQ(value("PING_RESULT \":a\""), -101);
}

TEST_F(LinkTestsTest, ParametersAreOperandsWithDefaults) {
    EXPECT_EQ(Run({"LOCAL adres = \"host\"", "LOCAL port = 65556", "LOCAL kto = \"ja\"",
                   "HTTP_INIT adres", "HTTP_INIT adres 8080", "HTTP_INIT adres port"}),
              "done");
    probes.WaitForFinished(3);
    EXPECT_THAT(probes.Notes(),
                testing::UnorderedElementsAre("ExecuteHttpConnectionThread 104: connect host 80",
                                              "ExecuteHttpConnectionThread 104: connect host 8080",
                                              "ExecuteHttpConnectionThread 104: connect host 20"));
    EXPECT_EQ(Run({"LOCAL kto = \"ja\"", "FTP_INIT \"host\" 2121 kto \"tajne\""}), "done");
    probes.WaitForFinished(4);
    EXPECT_EQ(Run({"FTP_INIT \"host\""}), "done");
    probes.WaitForFinished(5);
    EXPECT_THAT(probes.ftp.calls, ElementsAre("connect host:2121 ja tajne", "close"));
}

TEST_F(LinkTestsTest, ProtectedFtpPasswordThatIsNotOneForScriptsIsRefusedWithItsReason) {
    const platform::CCrypt crypt(PathOf("klucz"), platform::KeyFile::MadeAtFirstUse);
    LinkTarget target = Address("host");
    target.user = "ja";
    // As it stands in the line of a source.
    target.password = *crypt.EncryptTextWithLabel("Kalvex", "tajne");
    const std::string told =
        "Błąd FTP: klucz tej instalacji nie otwiera zabezpieczonego hasła użytkownika %s, a hasło "
        "źródła z profilu nie jest hasłem dla skryptu; właściwe tworzy kalvexd --protect";
    const std::string foreign = target.password;
    const std::string cut = crypt.EncryptText("tajne").substr(0, 20);
    for (const std::string& password : {foreign, cut, std::string("{kx1}jawne")}) {
        for (const platform::CCrypt* key :
             {&crypt, static_cast<const platform::CCrypt*>(nullptr)}) {
            logged.clear();
            target.password = password;
            target.crypt = key;
            EXPECT_EQ(Outcome(LinkKind::Ftp, target),
                      "-2 " + std::string(told).replace(told.find("%s"), 2, "ja"));
            EXPECT_THAT(logged, ElementsAre("1 " + told + " <ja>"));
        }
    }
    EXPECT_THAT(probes.ftp.calls, IsEmpty());
}

TEST_F(LinkTestsTest, FtpPasswordMayBeProtected) {
    const platform::CCrypt crypt(PathOf("klucz"), platform::KeyFile::ReadOnly);
    services.crypt = &crypt;
    const std::string password = crypt.EncryptText("tajne");
    EXPECT_EQ(Run({"FTP_INIT \"host\" 21 \"ja\" \"" + password + '"'}), "done");
    probes.WaitForFinished(1);
    EXPECT_THAT(probes.ftp.calls, ElementsAre("connect host:21 ja tajne", "close"));
}

TEST_F(LinkTestsTest, ParameterThatDoesNotEvaluateFailsAndStartsNothing) {
    for (const char* line :
         {"PING_INIT brak", "HTTP_INIT brak", "HTTP_INIT \"a\" brak", "FTP_INIT brak",
          "FTP_INIT \"a\" brak", "FTP_INIT \"a\" 21 brak", "FTP_INIT \"a\" 21 \"u\" brak"}) {
        EXPECT_EQ(Run({line}), "1: 3 brak") << line;
    }
    for (const char* line : {"LOCAL r = PING_RESULT brak", "LOCAL r = FTP_RESULT brak",
                             "LOCAL r = HTTP_RESULT brak"}) {
        EXPECT_EQ(Run({line}), "1: 3 brak") << line;
    }
    EXPECT_THAT(probes.Notes(), IsEmpty());
}

TEST_F(LinkTestsTest, FtpWithoutASession) {
    probes.hasSessions = false;
    EXPECT_EQ(Outcome(LinkKind::Ftp, Address("a")), "-1 Błąd otwarcia sesji FTP");
}

TEST_F(LinkTestsTest, FtpWithoutAUserOrAnAddressTouchesNoNetwork) {
    EXPECT_EQ(Outcome(LinkKind::Ftp, Address("a")),
              "-4 Nie zdefiniowano w programie nazwy użytkownika FTP");
    LinkTarget target;
    target.user = "u";
    EXPECT_EQ(Outcome(LinkKind::Ftp, target), "-2 Nie zdefiniowano w programie adresu serwera FTP");
    EXPECT_THAT(probes.ftp.calls, IsEmpty());
}

TEST_F(LinkTestsTest, FtpTriesThreeTimesAndKeepsTheFirstError) {
    probes.ftp.failures = 3;
    probes.ftp.error = "nie-można\r\n";
    LinkTarget target = Address("host");
    target.user = "u";
    target.port = 65557;
    EXPECT_EQ(Outcome(LinkKind::Ftp, target), "-2 Błąd FTP (niemożna)");
    EXPECT_THAT(probes.ftp.calls,
                ElementsAre("connect host:21 u ", "connect host:21 u ", "connect host:21 u "));
    EXPECT_THAT(probes.Notes(),
                ElementsAre(" 0: session", " 0: pause 2000", " 0: pause 2000", " 0: pause 2000"));
    EXPECT_THAT(logged, ElementsAre("0 Błąd FTP (Ponowienie próby nawiązania połączenia)",
                                    "0 Błąd FTP (Ponowienie próby nawiązania połączenia)"));
}

TEST_F(LinkTestsTest, FtpErrorHasAtMostTwoHundredCharacters) {
    probes.ftp.failures = 3;
    probes.ftp.error = std::string(150, 'x') + std::string(150, 'y');
    LinkTarget target = Address("host");
    target.user = "u";
    EXPECT_EQ(Outcome(LinkKind::Ftp, target),
              "-2 Błąd FTP (" + std::string(150, 'x') + std::string(50, 'y') + ")");
}

TEST_F(LinkTestsTest, FtpThatSucceedsAtALaterTryIsASuccess) {
    probes.ftp.failures = 2;
    probes.ftp.error = "zajęty";
    LinkTarget target = Address("host");
    target.user = "u";
    EXPECT_EQ(Outcome(LinkKind::Ftp, target), "1 Błąd FTP (zajęty)");
    EXPECT_EQ(probes.ftp.calls.size(), 4U);
    EXPECT_EQ(logged.size(), 2U);
}

TEST_F(LinkTestsTest, FtpTellsOneServerToLeaveUtf8) {
    LinkTarget target = Address("host");
    target.user = "u";
    probes.ftp.greeting = "220-FileZilla Server 1.7\r\n220 Witamy\r\n";
    EXPECT_EQ(Outcome(LinkKind::Ftp, target), "1 ");
    EXPECT_THAT(probes.ftp.calls, ElementsAre("connect host:0 u ", "OPTS UTF8 OFF", "close"));
    probes.ftp.calls.clear();
    probes.ftp.greeting = "220 inny\r\n";
    EXPECT_EQ(Outcome(LinkKind::Ftp, target), "1 ");
    EXPECT_THAT(probes.ftp.calls, ElementsAre("connect host:0 u ", "close"));
}

TEST_F(LinkTestsTest, FtpConnectionThatBreaksIsAFailure) {
    probes.ftp.closes = false;
    LinkTarget target = Address("host");
    target.user = "u";
    EXPECT_EQ(Outcome(LinkKind::Ftp, target), "-5 Połączenie FTP zostało przerwane");
}

TEST_F(LinkTestsTest, HttpFailuresHaveACodeATextAndALogLineEach) {
    const std::map<platform::TcpStep, std::pair<std::string, std::string>> rows = {
        {platform::TcpStep::Resolve, {"-3", "Nieprawidłowy adres serwera http %s. %s"}},
        {platform::TcpStep::Socket,
         {"-2", "Wystąpił błąd podczas otwierania połączenia z serwerem http %s. %s"}},
        {platform::TcpStep::Connect,
         {"-1", "Wystąpił błąd podczas próby zestawienia połączenia z serwerem http %s. %s"}},
        {platform::TcpStep::Close,
         {"-5", "Wystąpił błąd podczas zamykania połączenia z serwerem http %s. %s"}},
    };
    for (const auto& [step, row] : rows) {
        const auto& [code, text] = row;
        probes.tcp = {step, "słowa"};
        const std::string shown = text.substr(0, text.find('%')) + "host. słowa";
        EXPECT_EQ(Outcome(LinkKind::Http, Address("host")), code + ' ' + shown);
        EXPECT_EQ(logged.back(), "1 " + text + " <host> <słowa>");
    }
    probes.tcp = {};
    EXPECT_EQ(Outcome(LinkKind::Http, Address("host")), "1 ");
    EXPECT_EQ(logged.size(), rows.size());
}

TEST_F(LinkTestsTest, LogLineStandsBeforeTheResultIsSeen) {
    probes.tcp = {platform::TcpStep::Connect, "odmowa"};
    LinkTests tests(services);
    tests.Start(LinkKind::Http, Address("host"));
    probes.WaitForFinished(1);
    EXPECT_THAT(Log(), IsEmpty());
    EXPECT_EQ(tests.TakeResult(LinkKind::Http, "inny"), -101);
    EXPECT_THAT(Log(),
                ElementsAre("Wystąpił błąd podczas próby zestawienia połączenia z serwerem http "
                            "host. odmowa"));
}

TEST_F(LinkTestsTest, LogLineComesWithTheLoopWhenItHappens) {
    services.loop = &loop;
    probes.tcp = {platform::TcpStep::Connect, "odmowa"};
    LinkTests tests(services);
    tests.Start(LinkKind::Http, Address("host"));
    probes.WaitForFinished(1);
    EXPECT_TRUE(loop.Run());
    EXPECT_THAT(Log(),
                ElementsAre("Wystąpił błąd podczas próby zestawienia połączenia z serwerem http "
                            "host. odmowa"));
    EXPECT_EQ(tests.TakeResult(LinkKind::Http, "host"), -1);
    EXPECT_EQ(Log().size(), 1U);
}

TEST_F(LinkTestsTest, WhatComesAfterTheEndOfTheDocumentIsNotTouched) {
    services.loop = &loop;
    probes.tcp = {platform::TcpStep::Connect, "odmowa"};
    {
        LinkTests tests(services);
        tests.Start(LinkKind::Http, Address("host"));
    }
    EXPECT_EQ(Log().size(), 1U);
    loop.Run();
    EXPECT_EQ(Log().size(), 1U);
}

TEST_F(LinkTestsTest, ChecksThatNobodyCollectsKeepNoThread) {
    services.loop = &loop;
    LinkTests tests(services);
    for (int i = 0; i < 1500; ++i) {
        ASSERT_TRUE(tests.Start(LinkKind::Ping, Address("a" + std::to_string(i)))) << i;
        probes.WaitForFinished(i + 1);
        loop.Run();
    }
    probes.pings["a7"] = 5;
    EXPECT_TRUE(tests.Start(LinkKind::Ping, Address("a7")));
    probes.WaitForFinished(1501);
    loop.Run();
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a7"), 5);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a7"), -101);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a1499"), 0);
}

TEST_F(LinkTestsTest, ChecksOfOneAddressThatNobodyCollectsTakeTheMemoryOfOne) {
    services.loop = &loop;
    LinkTests tests(services);
    std::int64_t afterOne = 0;
    for (int i = 0; i < 500; ++i) {
        tests.Start(LinkKind::Ftp, Address("a"));
        probes.WaitForFinished(i + 1);
        loop.Run();
        probes.ForgetNotes();
        if (i == 10) afterOne = support::HeldBytes();
    }
    EXPECT_LE(support::HeldBytes(), afterOne + 10'000);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ftp, "a"), -4);
}

TEST_F(LinkTestsTest, OfManyResultsThatNobodyCollectsTheOldestGo) {
    services.loop = &loop;
    LinkTests tests(services);
    const int count = static_cast<int>(kMostLinkResults) + 2;
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(tests.Start(LinkKind::Ping, Address(std::to_string(i)))) << i;
        probes.WaitForFinished(i + 1);
        loop.Run();
        probes.ForgetNotes();
    }
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "0"), LinkUnknown);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "1"), LinkUnknown);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "2"), 0);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, std::to_string(count - 1)), 0);
}

TEST_F(LinkTestsTest, ChecksThatHaveFinishedStandInNobodysWay) {
    services.loop = &loop;
    LinkTests other(services);
    LinkTests tests(services);
    for (int i = 0; i < kMostLinkTests; ++i) ASSERT_TRUE(other.Start(LinkKind::Ping, Address("a")));
    probes.WaitForFinished(kMostLinkTests);
    ASSERT_TRUE(tests.Start(LinkKind::Ping, Address("a")));
    probes.WaitForFinished(kMostLinkTests + 1);
    EXPECT_EQ(tests.TakeResult(LinkKind::Ping, "a"), 0);
    EXPECT_EQ(other.TakeResult(LinkKind::Ping, "a"), 0);
}

TEST_F(LinkTestsTest, OnlySoManyChecksRunAtOnceInAllScripts) {
    services.loop = &loop;
    LinkTests other(services);
    for (int i = 0; i < 999; ++i) ASSERT_TRUE(other.Start(LinkKind::Ping, Address("czeka"))) << i;
    const std::string tooMany = "2: 11 Trwa już 1000 sprawdzeń połączeń, więcej być nie może";
    const std::vector<std::string> lines = {"PING_INIT \"czeka\"", "FTP_INIT \"a\" 21 \"u\"",
                                            "HTTP_INIT \"a\""};
    EXPECT_EQ(Run(lines), tooMany);
    EXPECT_EQ(Run({"; uwaga", "PING_INIT \"a\""}), tooMany);
    EXPECT_EQ(Run({"; uwaga", "HTTP_INIT \"a\""}), tooMany);
    EXPECT_THAT(Log(), testing::Contains("main.kx : Linia 2 - Inny błąd : Trwa już 1000 sprawdzeń "
                                         "połączeń, więcej być nie może"));
    probes.Release();
    probes.WaitForFinished(1000);
    loop.Run();
    EXPECT_EQ(Run(lines), "done");
    EXPECT_EQ(other.TakeResult(LinkKind::Ping, "czeka"), 0);
}

TEST_F(LinkTestsTest, LogLineOfATestThatNobodyAskedForComesWithTheEndOfTheDocument) {
    probes.tcp = {platform::TcpStep::Resolve, "brak"};
    {
        LinkTests tests(services);
        tests.Start(LinkKind::Http, Address("host"));
    }
    EXPECT_THAT(Log(), ElementsAre("Nieprawidłowy adres serwera http host. brak"));
}

}  // namespace
}  // namespace kalvex::host
