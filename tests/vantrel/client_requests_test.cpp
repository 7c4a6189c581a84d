#include "vantrel/client_requests.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ClientRequestsTest : public ClientRequests {};

TEST_F(ClientRequestsTest, AddQueuesAndMakeSends) {
    connection.AddDataRequest(value::KindHour, "A", 100, 100, nullptr, window);
    connection.AddDataRequest(value::KindHour, "B", 200, 300, &list, window);
    connection.AddDataRequest(value::KindDay, "A", 400, 400, nullptr, window);
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    connection.MakeDataRequest(value::KindHour);
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("read 1:2A[100..100] 2:2B[200..300]"));
    Forget();
    connection.MakeDataRequest(value::KindDay);
    connection.MakeDataRequest(value::KindDay);
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("read 3:3A[400..400]"));
}

TEST_F(ClientRequestsTest, RangeMayBeAskedForThinned) {
    connection.AddDataRequest(value::KindArchive, "A", 100, 900, &list, window, 500);
    connection.MakeDataRequest(value::KindArchive);
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("read 1:6A[100..900]/500"));
}

TEST_F(ClientRequestsTest, SingleAnswer) {
    const RequestId id = Read(value::KindHour, 100, 100);
    server.Send(ReadAnswer{id, ResultOk, {At(100, 1.5)}, true});
    network.Deliver();
    EXPECT_THAT(window.answers, ElementsAre("2V 0 1.50/0"));
}

TEST_F(ClientRequestsTest, SingleAnswerWithoutAValueHasFailed) {
    const RequestId id = Read(value::KindMonth, 100, 100);
    server.Send(ReadAnswer{id, ResultOk, {}, true});
    network.Deliver();
    EXPECT_THAT(window.answers, ElementsAre("4V 1 /0"));
}

TEST_F(ClientRequestsTest, RangeInPiecesReachesTheListAtTheLast) {
    const RequestId id = Read(value::KindArchive, 100, 300, &list);
    server.Send(ReadAnswer{id, ResultOk, {At(100, 1.0), At(200, 2.0)}, false});
    network.Deliver();
    EXPECT_EQ(list.GetSize(), 0u);
    EXPECT_THAT(window.answers, IsEmpty());
    server.Send(ReadAnswer{id, ResultOk, {At(300, 3.0)}, true});
    network.Deliver();
    EXPECT_THAT(window.answers, ElementsAre("6V 0 [1.00/0 2.00/0 3.00/0]"));
    EXPECT_EQ(list.Get(2)->GetTime(), 300);
}

TEST_F(ClientRequestsTest, RangeTakesThePlaceOfWhatTheListHeld) {
    list.Add(value::CVal(99));
    const RequestId id = Read(value::KindSpan, 100, 300, &list);
    server.Send(ReadAnswer{id, ResultOk, {}, true});
    network.Deliver();
    EXPECT_THAT(window.answers, ElementsAre("5V 0 []"));
}

TEST_F(ClientRequestsTest, RangeThatFailsOnTheWayLeavesTheListAlone) {
    const RequestId id = Read(value::KindArchive, 100, 300, &list);
    server.Send(ReadAnswer{id, ResultOk, {At(100, 1.0)}, false});
    server.Send(ReadAnswer{id, ResultServerFault, {}, true});
    network.Deliver();
    EXPECT_THAT(window.answers, ElementsAre("6V 5 []"));
}

TEST_F(ClientRequestsTest, CancelledRequestIsNotAnswered) {
    const RequestId id = Read(value::KindHour, 100, 100);
    connection.CancelDataRequest(value::KindHour, id);
    network.Deliver();
    EXPECT_EQ(server.heard.back(), "cancel 1");
    server.Send(ReadAnswer{id, ResultOk, {At(100, 1.5)}, true});
    network.Deliver();
    EXPECT_THAT(window.answers, IsEmpty());
}

TEST_F(ClientRequestsTest, CancelBeforeMakeSendsNothing) {
    const RequestId id = connection.AddDataRequest(value::KindHour, "V", 1, 1, nullptr, window);
    connection.CancelDataRequest(value::KindHour, id);
    connection.MakeDataRequest(value::KindHour);
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
}

TEST_F(ClientRequestsTest, CancelOfAnAnsweredRequestSendsNothing) {
    const RequestId id = Read(value::KindHour, 100, 100);
    server.Send(ReadAnswer{id, ResultOk, {At(100, 1.5)}, true});
    network.Deliver();
    Forget();
    connection.CancelDataRequest(value::KindHour, id);
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
}

// The server hears of so many at a time; an answer or a cancellation lets the next one through.
TEST_F(ClientRequestsTest, VeryManyReadsAreHeldBack) {
    for (int i = 1; i <= 503; ++i) {
        connection.AddDataRequest(value::KindHour, "V", i, i, nullptr, window);
    }
    connection.MakeDataRequest(value::KindHour);
    network.Deliver();
    ASSERT_EQ(server.heard.size(), 1u);
    EXPECT_THAT(server.heard[0], testing::EndsWith(" 500:2V[500..500]"));
    Forget();
    connection.CancelDataRequest(value::KindHour, 502);
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    server.Send(ReadAnswer{7, ResultOk, {At(7, 1.5)}, true});
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("read 501:2V[501..501]"));
    Forget();
    connection.CancelDataRequest(value::KindHour, 8);
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("cancel 8", "read 503:2V[503..503]"));
    window.answers.clear();
    Break();
    EXPECT_EQ(window.answers.size(), 500u);
    connection.CheckConnection();
    network.Deliver();
    Forget();
    const RequestId id = Read(value::KindDay, 9, 9);
    EXPECT_THAT(server.heard, ElementsAre("read " + std::to_string(id) + ":3V[9..9]"));
}

TEST_F(ClientRequestsTest, BreakAnswersWhatIsOutstandingInOrder) {
    Read(value::KindHour, 100, 100);
    Read(value::KindArchive, 100, 300, &list);
    connection.AddReportModifyRequest(value::KindDay, "V", 100, value::CVal(1.5));
    connection.MakeDataRequest(value::KindDay);
    connection.AddCurrentDataModifyRequest("V", value::CVal(2));
    connection.MakeCurrentDataModifyRequest();
    Break();
    EXPECT_THAT(window.answers, ElementsAre("2V 1 /0", "6V 1 []"));
    EXPECT_THAT(connection.events, ElementsAre("disconnect 4104"));
    EXPECT_EQ(connection.WritesWaiting(), 2u);
}

// ---- writes over a break

TEST_F(ClientRequestsTest, WritesWithoutAnAnswerAreSentAgainBeforeNewerOnes) {
    connection.AddReportModifyRequest(value::KindDay, "V", 100, value::CVal(1.5));
    connection.MakeDataRequest(value::KindDay);
    connection.AddCurrentDataModifyRequest("V", value::CVal(2));
    connection.MakeCurrentDataModifyRequest();
    list.Add(At(100, 3.5));
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{100}, value::TIMEW{100});
    connection.MakeArchiveModifyRequest();
    connection.AddCurrentDataModifyRequest("V", value::CVal(4));
    connection.MakeCurrentDataModifyRequest();
    network.Deliver();
    server.Send(ModifyResults{{{2, ResultOk}}});
    network.Deliver();
    Break();
    Forget();
    connection.CheckConnection();
    connection.AddCurrentDataModifyRequest("V", value::CVal(5));
    connection.MakeCurrentDataModifyRequest();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23", "modify 1:3V[100]=1.50/0",
                                          "archive 3:V[100..100] 3.50/0", "modify 4:1V[0]=4/0"));
    EXPECT_THAT(Serials(), ElementsAre(1u, 2u, 3u, 4u, 1u, 3u, 4u));
    Forget();
    server.Send(ModifyResults{{{1, ResultOk}, {4, ResultNoAccess}, {3, ResultBadValue}}});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("not written V 2", "archive not written V 3"));
    EXPECT_EQ(connection.WritesWaiting(), 0u);
    Break();
    Forget();
    connection.CheckConnection();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23"));
}

// While the connection is known to be down a write is lost; from the attempt on it waits its turn.
TEST_F(ClientRequestsTest, NewerWritesWaitBehindThoseThatAreSentAgain) {
    connection.AddCurrentDataModifyRequest("V", value::CVal(1));
    connection.MakeCurrentDataModifyRequest();
    server.answersLogin = false;
    Break();
    connection.CheckConnection();
    network.Deliver();
    ASSERT_EQ(connection.GetState(), StateLogin);
    connection.AddCurrentDataModifyRequest("V", value::CVal(2));
    connection.MakeCurrentDataModifyRequest();
    connection.MakePeriodRequest(PeriodAction::Load, value::KindHour, "V", 100);
    Forget();
    server.Send(LoginResult{});
    network.Deliver();
    EXPECT_THAT(server.heard,
                ElementsAre("modify 1:1V[0]=1/0", "modify 2:1V[0]=2/0", "period 1:2V[100]"));
}

TEST_F(ClientRequestsTest, FailedAttemptsDoNotEndWritesThatHadBeenSent) {
    connection.AddCurrentDataModifyRequest("V", value::CVal(1));
    connection.MakeCurrentDataModifyRequest();
    network.Deliver();
    Break();
    server.accepts = false;
    for (int attempt = 0; attempt < 3; ++attempt) {
        connection.CheckConnection();
        network.Deliver();
    }
    EXPECT_EQ(connection.WritesWaiting(), 1u);
    server.accepts = true;
    Forget();
    connection.CheckConnection();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23", "modify 1:1V[0]=1/0"));
}

TEST_F(ClientRequestsTest, TokenIsOneConnectionsOwn) {
    Break();
    connection.CheckConnection();
    network.Deliver();
    support::HeardConnection other;
    other.Create(23, "srv", "Kalvex", network, nullptr);
    network.Deliver();
    ASSERT_EQ(server.logins.size(), 3u);
    EXPECT_GE(server.logins[0].token.size(), 8u);
    EXPECT_EQ(server.logins[1].token, server.logins[0].token);
    EXPECT_NE(server.logins[2].token, server.logins[0].token);
    EXPECT_EQ(server.logins[2].term, 0u);
}

TEST_F(ClientRequestsTest, VeryManyWritesAreHeldBackAndReadsWaitBehindThem) {
    for (int i = 1; i <= 502; ++i) {
        connection.AddReportModifyRequest(value::KindHour, "V", i, value::CVal(i));
    }
    connection.AddDataRequest(value::KindHour, "V", 9, 9, nullptr, window);
    connection.MakeDataRequest(value::KindHour);
    network.Deliver();
    ASSERT_EQ(server.heard.size(), 1u);
    EXPECT_THAT(server.heard[0], testing::EndsWith(" 500:2V[500]=500/0"));
    Forget();
    server.Send(ModifyResults{{{1, ResultOk}}});
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("modify 501:2V[501]=501/0"));
    Forget();
    server.Send(ModifyResults{{{7, ResultOk}, {8, ResultOk}}});
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("modify 502:2V[502]=502/0", "read 503:2V[9..9]"));
    Break();
    Forget();
    connection.CheckConnection();
    network.Deliver();
    ASSERT_EQ(server.heard.size(), 2u);
    EXPECT_THAT(server.heard[1], testing::StartsWith("modify 2:2V[2]=2/0 3:2V[3]=3/0"));
    EXPECT_THAT(server.heard[1], testing::EndsWith(" 502:2V[502]=502/0"));
}

TEST_F(ClientRequestsTest, FewLongArchivesAreUnderWay) {
    for (int i = 0; i < 36; ++i) {
        value::CVal text(std::string(1 << 20, 'x'));
        text.SetTime(100);
        list.Add(text);
    }
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{100}, value::TIMEW{100});
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{100}, value::TIMEW{100});
    connection.MakeArchiveModifyRequest();
    network.Deliver();
    EXPECT_THAT(server.heard.size(), 4u);
    // Two texts go in a write. 64 MiB are waiting; what is beyond is not taken.
    EXPECT_EQ(connection.WritesWaiting(), 31u);
    ASSERT_EQ(connection.events.size(), 5u);
    for (const std::string& event : connection.events) {
        EXPECT_EQ(event.substr(0, 27), "lost, as too many wait, 6V[");
    }
}

TEST_F(ClientRequestsTest, OrdersAreSentAgainToAServerThatAnswersThem) {
    connection.MakePeriodRequest(PeriodAction::Load, value::KindHour, "V", 100);
    connection.MakePeriodRequest(PeriodAction::Calculate, value::KindDay, "V", 200);
    network.Deliver();
    server.loginResult.sequence = 0;
    Break();
    EXPECT_EQ(connection.WritesWaiting(), 0u);
    connection.CheckConnection();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("period 1:2V[100]", "period 2:3V[200]", "closed 4104",
                                          "login / Kalvex 23"));
    connection.MakePeriodRequest(PeriodAction::Load, value::KindHour, "V", 300);
    connection.MakePeriodRequest(PeriodAction::Calculate, value::KindDay, "V", 400);
    network.Deliver();
    EXPECT_THAT(server.serials, ElementsAre(1, 2, 3, 4));
    Break();
    EXPECT_EQ(connection.WritesWaiting(), 2u);
    Forget();
    connection.CheckConnection();
    network.Deliver();
    EXPECT_THAT(server.heard,
                ElementsAre("login / Kalvex 23", "period 1:2V[300]", "period 2:3V[400]"));
    EXPECT_THAT(server.serials, ElementsAre(1, 2, 3, 4, 3, 4));
    server.Send(ModifyResults{{{3, ResultBadRequest}}});
    network.Deliver();
    EXPECT_EQ(connection.events.back(), "order not done 1:2V 4");
    EXPECT_EQ(connection.WritesWaiting(), 1u);
}

TEST_F(ClientRequestsTest, OrdersOfAServerThatAnswersThemAreHeldBack) {
    server.loginResult.sequence = 0;
    Break();
    connection.CheckConnection();
    network.Deliver();
    Forget();
    for (int i = 1; i <= 501; ++i) {
        connection.MakePeriodRequest(PeriodAction::Load, value::KindHour, "V", i);
    }
    network.Deliver();
    EXPECT_EQ(server.heard.size(), 500u);
    server.Send(ModifyResults{{{1, ResultOk}}});
    network.Deliver();
    EXPECT_EQ(server.heard.size(), 501u);
    EXPECT_EQ(server.heard.back(), "period 1:2V[501]");
}

TEST_F(ClientRequestsTest, AcknowledgementsGoInTurnWithTheWritesAndAgainAfterABreak) {
    connection.Acknowledge("V");
    connection.AddCurrentDataModifyRequest("V", value::CVal(7));
    connection.MakeCurrentDataModifyRequest();
    connection.Acknowledge("W");
    EXPECT_THAT(journal.entries,
                ElementsAre("srv Acknowledge variable=V",
                            "srv AddCurrentDataModifyRequest variable=V value=7/0",
                            "srv MakeCurrentDataModifyRequest", "srv Acknowledge variable=W"));
    network.Deliver();
    EXPECT_THAT(server.heard,
                ElementsAre("acknowledge 1:V", "modify 2:1V[0]=7/0", "acknowledge 3:W"));
    EXPECT_THAT(server.serials, ElementsAre(1, 2, 3));
    server.Send(ModifyResults{{{1, ResultOk}, {2, ResultOk}}});
    network.Deliver();
    Break();
    EXPECT_EQ(connection.WritesWaiting(), 1u);
    Forget();
    connection.CheckConnection();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23", "acknowledge 3:W"));
    EXPECT_THAT(server.serials, ElementsAre(1, 2, 3, 3));
    connection.events.clear();
    server.Send(ModifyResults{{{3, ResultNoAccess}}});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("acknowledged W 2"));
    EXPECT_EQ(connection.WritesWaiting(), 0u);
}

TEST_F(ClientRequestsTest, OrdersThatAreNeverAnsweredDoNotGather) {
    for (int i = 0; i < 2000; ++i) {
        connection.MakePeriodRequest(PeriodAction::Load, value::KindHour, "V", i);
    }
    EXPECT_EQ(connection.WritesWaiting(), 1000u);
}

TEST_F(ClientRequestsTest, DownTheReadsFailAtOnceAndTheOrdersAreToldAsLost) {
    Break();
    Forget();
    connection.AddDataRequest(value::KindHour, "V", 100, 100, nullptr, window);
    EXPECT_THAT(window.answers, IsEmpty());
    connection.MakeDataRequest(value::KindHour);
    EXPECT_THAT(window.answers, ElementsAre("2V 1 /0"));
    connection.AddReportModifyRequest(value::KindHour, "V", 100, value::CVal(1.5));
    connection.MakeDataRequest(value::KindHour);
    connection.AddCurrentDataModifyRequest("V", value::CVal(2));
    connection.MakeCurrentDataModifyRequest();
    list.Add(At(1, 3.5));
    list.Add(At(2, 4.5));
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{1}, value::TIMEW{2});
    connection.MakeArchiveModifyRequest();
    connection.MakePeriodRequest(PeriodAction::Init, value::KindHour, "V", 100);
    EXPECT_THAT(connection.events,
                ElementsAre("lost 2V[100] 1.50/0", "lost 1V[0] 2/0", "lost 6V[1] 3.50/0 4.50/0",
                            "lost period 0:2V[100]"));
    connection.CheckConnection();
    network.Deliver();
    EXPECT_EQ(connection.GetState(), StateConnected);
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23"));
    Forget();
    Break();
    EXPECT_THAT(connection.events, ElementsAre("disconnect 4104"));
}

TEST_F(ClientRequestsTest, MadeWhileTheConnectionComesUpAreSentThen) {
    Break();
    Forget();
    connection.RegisterVariable("V", &owner);
    connection.Subscribe();
    connection.CheckConnection();
    support::HeardConnection other;
    other.Create(23, "srv", "Kalvex", network, nullptr);
    other.RegisterVariable("V", &owner);
    other.Subscribe();
    other.AddReportModifyRequest(value::KindHour, "V", 100, value::CVal(1.5));
    other.AddDataRequest(value::KindHour, "V", 100, 100, nullptr, window);
    other.MakeDataRequest(value::KindHour);
    other.MakePeriodRequest(PeriodAction::Load, value::KindDay, "V", 200);
    EXPECT_THAT(window.answers, IsEmpty());
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23", "login / Kalvex 23", "subscribe +1V",
                                          "subscribe +1V", "modify 1:2V[100]=1.50/0",
                                          "read 2:2V[100..100]", "period 1:3V[200]"));
}

TEST_F(ClientRequestsTest, FailedAttemptAnswersWhatWaitedForIt) {
    server.accepts = false;
    support::HeardConnection other;
    other.Create(23, "srv", "Kalvex", network, nullptr);
    other.AddReportModifyRequest(value::KindHour, "V", 100, value::CVal(1.5));
    other.AddDataRequest(value::KindHour, "V", 100, 100, nullptr, window);
    other.MakeDataRequest(value::KindHour);
    list.Add(At(1, 3.5));
    other.AddArchiveModifyRequest("V", list, value::TIMEW{1}, value::TIMEW{1});
    other.MakeArchiveModifyRequest();
    other.MakePeriodRequest(PeriodAction::Refresh, value::KindArchive, "V", 300);
    network.Deliver();
    EXPECT_THAT(window.answers, ElementsAre("2V 1 /0"));
    EXPECT_THAT(other.events, ElementsAre("lost 2V[100] 1.50/0", "lost 6V[1] 3.50/0",
                                          "lost period 4:6V[300]", "fault 2 4110"));
    server.accepts = true;
    other.CheckConnection();
    network.Deliver();
    EXPECT_EQ(other.GetState(), StateConnected);
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23"));
}

TEST_F(ClientRequestsTest, WritesOfOneKindGoTogether) {
    connection.AddReportModifyRequest(value::KindHour, "V", 100, value::CVal(1.5));
    connection.AddReportModifyRequest(value::KindHour, "V", 200, value::CVal(2.5));
    connection.AddReportModifyRequest(value::KindDay, "V", 300, value::CVal(3.5));
    connection.MakeDataRequest(value::KindHour);
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("modify 1:2V[100]=1.50/0 2:2V[200]=2.50/0"));
    Forget();
    server.Send(ModifyResults{{{1, ResultOk}, {2, 9}, {77, 9}}});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("report not written 2V 9"));
}

TEST_F(ClientRequestsTest, CurrentWriteIsAcknowledgedWithItsValue) {
    value::CVal value(5.0);
    value.SetStatus(value::Status::Supervisory);
    connection.AddCurrentDataModifyRequest("V", value);
    connection.MakeCurrentDataModifyRequest();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("modify 1:1V[0]=5.00/32768"));
    server.Send(ModifyResults{{{1, ResultOk}}});
    server.Send(ModifyResults{{{1, ResultOk}}});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("written V 5.00/32768"));
}

TEST_F(ClientRequestsTest, RefusedCurrentWrite) {
    connection.AddCurrentDataModifyRequest("V", value::CVal(5));
    connection.MakeCurrentDataModifyRequest();
    server.Send(ModifyResults{{{1, ResultNoAccess}}});
    network.Deliver();
    EXPECT_THAT(connection.events, ElementsAre("not written V 2"));
}

TEST_F(ClientRequestsTest, ArchiveWriteCarriesTheListAsItIs) {
    list.Add(At(100, 1.5));
    list.Add(At(200, 2.5));
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{100}, value::TIMEW{200});
    network.Deliver();
    EXPECT_THAT(server.heard, IsEmpty());
    connection.MakeArchiveModifyRequest();
    connection.MakeArchiveModifyRequest();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("archive 1:V[100..200] 1.50/0 2.50/0"));
}

TEST_F(ClientRequestsTest, LongArchiveGoesInSeveralWrites) {
    for (int i = 0; i < 20001; ++i) list.Add(At(1000 + i, 0.5));
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{1000}, value::TIMEW{21000});
    connection.MakeArchiveModifyRequest();
    network.Deliver();
    ASSERT_EQ(server.heard.size(), 3u);
    EXPECT_THAT(server.heard[0], testing::StartsWith("archive 1:V[1000..10999] 0.50/0 0.50/0"));
    EXPECT_THAT(server.heard[1], testing::StartsWith("archive 2:V[11000..20999] 0.50/0"));
    EXPECT_EQ(server.heard[2], "archive 3:V[21000..21000] 0.50/0");
}

TEST_F(ClientRequestsTest, ArchiveOfLongTextsGoesInSeveralWrites) {
    for (int i = 0; i < 40; ++i) {
        value::CVal text(std::string(60000, 'x'));
        text.SetTime(100 + i);
        list.Add(text);
    }
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{100}, value::TIMEW{139});
    connection.MakeArchiveModifyRequest();
    network.Deliver();
    std::vector<std::string> heads;
    for (const std::string& heard : server.heard) heads.push_back(heard.substr(0, 21));
    // 18 texts of 60000 bytes are the first to be beyond a mebibyte.
    EXPECT_THAT(heads, ElementsAre("archive 1:V[100..117]", "archive 2:V[118..135]",
                                   "archive 3:V[136..139]"));
}

TEST_F(ClientRequestsTest, JournalNamesEachOperation) {
    const RequestId id = connection.AddDataRequest(value::KindHour, "V", 1, 1, nullptr, window);
    connection.MakeDataRequest(value::KindHour);
    connection.CancelDataRequest(value::KindHour, id);
    connection.AddDataRequest(value::KindArchive, "V", 1, 2, &list, window);
    connection.MakeDataRequest(value::KindArchive);
    connection.CancelDataRequest(value::KindArchive, 2);
    connection.AddReportModifyRequest(value::KindDay, "V", 3, value::CVal(1.5));
    connection.MakeDataRequest(value::KindDay);
    connection.AddCurrentDataModifyRequest("V", value::CVal(2));
    connection.MakeCurrentDataModifyRequest();
    list.Add(value::CVal(1));
    connection.AddArchiveModifyRequest("V", list, value::TIMEW{4}, value::TIMEW{5});
    connection.MakeArchiveModifyRequest();
    connection.MakePeriodRequest(PeriodAction::Init, value::KindMonth, "V", 6);
    connection.MakePeriodRequest(PeriodAction::Load, value::KindSpan, "V", 6);
    connection.MakePeriodRequest(PeriodAction::Calculate, value::KindHour, "V", 6);
    connection.MakePeriodRequest(PeriodAction::Update, value::KindArchive, "V", 6);
    connection.MakePeriodRequest(PeriodAction::Refresh, value::KindArchive, "V", 6);
    connection.RegisterVariable("V", &owner);
    connection.UnRegisterVariable("V", &owner);
    connection.Subscribe();
    EXPECT_THAT(journal.entries,
                ElementsAre("srv AddHourReportRequest variable=V from=1 to=1 id=1 no list",
                            "srv MakeHourReportRequest", "srv CancelHourReportRequest id=1",
                            "srv AddArchiveDataRequest variable=V from=1 to=2 id=2 list",
                            "srv MakeArchiveDataRequest", "srv CancelArchiveDataRequest id=2",
                            "srv AddDayReportModifyRequest variable=V time=3 value=1.50/0",
                            "srv MakeDayReportRequest",
                            "srv AddCurrentDataModifyRequest variable=V value=2/0",
                            "srv MakeCurrentDataModifyRequest",
                            "srv AddArchiveModifyRequest variable=V from=4 to=5 values=1",
                            "srv MakeArchiveModifyRequest",
                            "srv MakeMonthReportInitRequest variable=V time=6",
                            "srv MakeSpanReportLoadRequest variable=V time=6",
                            "srv MakeHourReportCalcRequest variable=V time=6",
                            "srv MakeArchiveDataUpdateRequest variable=V time=6",
                            "srv MakeArchiveDataRefreshRequest variable=V time=6",
                            "srv RegisterVariable variable=V", "srv UnRegisterVariable variable=V",
                            "srv Subscribe"));
}

}  // namespace
}  // namespace kalvex::vantrel
