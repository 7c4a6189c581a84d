// What one client hears and may do.
#include "operator_fixture.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class SessionTest : public OperatorTest {
  protected:
    std::string Stamp(std::int64_t later = 0) const { return std::to_string(m_start + later); }
};

// ---- subscriptions

TEST_F(SessionTest, SubscriptionIsAnsweredWithErrorsDefinitionsAndValues) {
    TestClient& client = LogIn();
    client.Say(vantrel::SubscribeRequest{
        {{7, "Z1.P"}, {8, "Tajne.X"}, {9, "Brak"}, {10, "Z1.N"}}, {}, 0, true});
    ASSERT_EQ(client.messages.size(), 3u);
    const auto& errors = std::get<vantrel::AccessErrors>(client.messages[0]).entries;
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].handle, 8u);
    EXPECT_EQ(errors[0].code, 0);
    EXPECT_EQ(errors[1].handle, 9u);
    EXPECT_EQ(errors[1].code, 0);
    const auto& definitions = std::get<vantrel::VariableDefinitions>(client.messages[1]);
    EXPECT_TRUE(definitions.last);
    ASSERT_EQ(definitions.definitions.size(), 2u);
    EXPECT_EQ(definitions.definitions[0].name, "Z1.P");
    EXPECT_THAT(definitions.definitions[0].attributes,
                ElementsAre(Pair("at", "32"), Pair("max", "10"), Pair("min", "0"), Pair("rt", "30"),
                            Pair("un", "MPa")));
    EXPECT_TRUE(std::get<vantrel::ValueUpdates>(client.messages[2]).last);
    EXPECT_THAT(Updates(client), ElementsAre("7: 171 0 " + Stamp() + " 5.00", "10: 255 1 0 "));
}

TEST_F(SessionTest, AnswerIsCompleteEvenWithoutValues) {
    TestClient& client = LogIn();
    client.Say(vantrel::SubscribeRequest{{{1, "Brak"}}, {}, 0, false});
    client.Say(vantrel::SubscribeRequest{{{2, "Brak"}}, {}, 0, true});
    const std::vector<vantrel::ValueUpdates> updates = client.Take<vantrel::ValueUpdates>();
    ASSERT_EQ(updates.size(), 2u);
    EXPECT_THAT(updates[0].entries, IsEmpty());
    EXPECT_FALSE(updates[0].last);
    EXPECT_TRUE(updates[1].last);
    client.messages.clear();
    client.Say(vantrel::SubscribeRequest{{}, {1}, 0, true});
    EXPECT_THAT(client.messages, IsEmpty());
}

TEST_F(SessionTest, ChangesGoToThoseWhoSubscribed) {
    TestClient& writer = Operator();
    TestClient& reader = LogIn();
    Subscribe(reader, {"Z1.N", "Z1.P"});
    EXPECT_EQ(Modify(writer, value::KindCurrent, "Z1.P", 0, value::CVal(6)), vantrel::ResultOk);
    EXPECT_THAT(Updates(reader), ElementsAre("2: 171 0 " + Stamp() + " 6.00"));
    EXPECT_THAT(writer.messages, IsEmpty());
    reader.Say(vantrel::SubscribeRequest{{}, {2}, 0, true});
    EXPECT_EQ(Modify(writer, value::KindCurrent, "Z1.P", 0, value::CVal(7)), vantrel::ResultOk);
    EXPECT_THAT(reader.messages, IsEmpty());
}

TEST_F(SessionTest, OneVariableUnderTwoHandles) {
    TestClient& client = Operator();
    client.Say(vantrel::SubscribeRequest{
        {{1, "Z1.P"}, {2, "Z1.P"}, {2, "Z1.N"}, {0, "Z1.N"}}, {}, 0, true});
    client.messages.clear();
    Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(6));
    EXPECT_THAT(Updates(client),
                ElementsAre("1: 171 0 " + Stamp() + " 6.00", "2: 171 0 " + Stamp() + " 6.00"));
    client.Say(vantrel::SubscribeRequest{{}, {1, 99}, 0, true});
    Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(7));
    EXPECT_THAT(Updates(client), ElementsAre("2: 171 0 " + Stamp() + " 7.00"));
}

TEST_F(SessionTest, ClientThatHasGoneIsNotSentAnything) {
    TestClient& writer = Operator();
    TestClient& reader = LogIn();
    Subscribe(reader, {"Z1.P"});
    reader.End(vantrel::ReasonClientEnded);
    EXPECT_EQ(Modify(writer, value::KindCurrent, "Z1.P", 0, value::CVal(6)), vantrel::ResultOk);
    EXPECT_THAT(reader.messages, IsEmpty());
}

TEST_F(SessionTest, SlowClientGetsTheNewestValueAlone) {
    TestClient& writer = Operator();
    TestClient& reader = LogIn();
    Subscribe(reader, {"Z1.N", "Z1.P"});
    reader.backlog = 8;
    for (int value = 1; value <= 9; ++value)
        Modify(writer, value::KindCurrent, "Z1.P", 0, value::CVal(value));
    EXPECT_THAT(reader.messages, IsEmpty());
    reader.backlog = 0;
    reader.session->OnDrained();
    EXPECT_THAT(Updates(reader), ElementsAre("2: 171 0 " + Stamp() + " 9.00"));
}

TEST_F(SessionTest, LargeSubscriptionIsAnsweredInPieces) {
    std::string csv = "name,value\n";
    std::vector<std::string> names;
    for (int index = 0; index < 2500; ++index) {
        names.push_back("V" + std::to_string(index));
        csv += names.back() + ",1\n";
    }
    m_folder.Put("many.csv", csv);
    Start("[server]\nvariables = 2500\n[[variables]]\nfile = \"many.csv\"\n");
    TestClient& client = LogIn();
    vantrel::SubscribeRequest request;
    for (std::size_t index = 0; index < names.size(); ++index) {
        request.added.push_back({static_cast<vantrel::VariableHandle>(index + 1), names[index]});
    }
    client.Say(request);
    std::size_t defined = 0;
    int lasts = 0;
    for (const vantrel::VariableDefinitions& piece : client.Take<vantrel::VariableDefinitions>()) {
        EXPECT_LE(piece.definitions.size(), 500u);
        defined += piece.definitions.size();
        lasts += piece.last ? 1 : 0;
    }
    EXPECT_EQ(defined, 2500u);
    EXPECT_EQ(lasts, 1);
    const std::vector<vantrel::ValueUpdates> updates = client.Take<vantrel::ValueUpdates>();
    ASSERT_EQ(updates.size(), 3u);
    EXPECT_EQ(updates[0].entries.size(), 1000u);
    EXPECT_FALSE(updates[1].last);
    EXPECT_TRUE(updates[2].last);

    // Twice the variables of the server is the most, and it is told once.
    for (vantrel::SubscribeRequest::Entry& entry : request.added) entry.handle += 10000;
    client.Say(request);
    EXPECT_THAT(client.Take<vantrel::AccessErrors>(), IsEmpty());
    for (vantrel::SubscribeRequest::Entry& entry : request.added) entry.handle += 10000;
    client.Say(request);
    const std::vector<vantrel::AccessErrors> errors = client.Take<vantrel::AccessErrors>();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].entries.size(), 2500u);
    EXPECT_EQ(errors[0].entries[0].code, vantrel::ResultBadRequest);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Klient Kalvex_stacja: zbyt wiele subskrybowanych zmiennych"));
}

class SessionAbsentTest : public SessionTest {
  protected:
    // Under handles that have not been given, names that stand for nothing, each of that length.
    // Whether hidden or missing is the same.
    vantrel::SubscribeRequest Absent(std::size_t count, std::size_t length) {
        vantrel::SubscribeRequest request{{}, {}, 0, true};
        for (std::size_t i = 0; i < count; ++i) {
            std::string name = "Tajne.X";
            if (i > 0) name = std::to_string(i);
            name.resize(length, ' ');
            request.added.push_back({++m_handle, name});
        }
        return request;
    }
    // How many were answered with each code since the last call.
    std::map<std::uint16_t, int> Codes() {
        std::map<std::uint16_t, int> codes;
        for (const vantrel::AccessErrors& errors : m_client.Take<vantrel::AccessErrors>()) {
            for (const auto& entry : errors.entries) ++codes[entry.code];
        }
        m_client.messages.clear();
        return codes;
    }

    TestClient& m_client = LogIn();
    vantrel::VariableHandle m_handle = 0;
    const std::string m_told =
        "1 Klient Kalvex_stacja: zbyt wiele subskrybowanych nazw, pod którymi nie ma zmiennych";
};

TEST_F(SessionAbsentTest, SoManyNamesAreKept) {
    const vantrel::SubscribeRequest request = Absent(20'002, 7);
    m_client.Say(request);
    EXPECT_THAT(Codes(), ElementsAre(Pair(0, 20'000), Pair(vantrel::ResultBadRequest, 2)));
    m_client.Say(vantrel::SubscribeRequest{{{++m_handle, "Z1.N"}}, {}, 0, true});
    EXPECT_THAT(Codes(), IsEmpty());
    m_client.Say(vantrel::SubscribeRequest{{}, {1, 2, m_handle}, 0, true});
    m_client.Say(Absent(3, 7));
    EXPECT_THAT(Codes(), ElementsAre(Pair(0, 2), Pair(vantrel::ResultBadRequest, 1)));
    EXPECT_THAT(m_log.Take(), ElementsAre(m_told));
}

TEST_F(SessionAbsentTest, SoManyBytesOfNamesAreKept) {
    m_client.Say(Absent(2049, 1024));
    EXPECT_THAT(Codes(), ElementsAre(Pair(0, 2048), Pair(vantrel::ResultBadRequest, 1)));
    m_client.Say(vantrel::SubscribeRequest{{}, {1}, 0, true});
    m_client.Say(Absent(2, 512));
    EXPECT_THAT(Codes(), ElementsAre(Pair(0, 2)));
    EXPECT_THAT(m_log.Take(), ElementsAre(m_told));
}

TEST_F(SessionAbsentTest, WhatHasGoneSinceStaysSubscribed) {
    const std::string gone = m_toml.substr(0, m_toml.find("[[variable]]"));
    Subscribe(m_client, {"Z1.P"});
    m_handle = 1;
    m_client.Say(Absent(20'000, 7));
    m_client.messages.clear();
    Configure(gone);
    m_server->Reload();
    EXPECT_THAT(Codes(), ElementsAre(Pair(0, 20'001)));
    m_client.Say(Absent(1, 7));
    EXPECT_THAT(Codes(), ElementsAre(Pair(vantrel::ResultBadRequest, 1)));
    Configure(m_toml);
    m_server->Reload();
    EXPECT_EQ(Updates(m_client).size(), 1u);
}

// ---- current values

TEST_F(SessionTest, WriteIsConvertedStampedAndAnswered) {
    TestClient& client = Operator();
    Subscribe(client, {"Z1.P", "Z1.N", "Z1.T"});
    m_clock.Advance(5000);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0,
                     support::Stamped(value::CVal("7.5"), 1, 0x8004)),
              vantrel::ResultOk);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.N", 0, value::CVal(7.9)), vantrel::ResultOk);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.T", 0, value::CVal(12)), vantrel::ResultOk);
    EXPECT_THAT(Updates(client),
                ElementsAre("1: 171 32772 " + Stamp(5) + " 7.50", "2: 150 0 " + Stamp(5) + " 7",
                            "3: 190 0 " + Stamp(5) + " 12"));
}

TEST_F(SessionTest, LongestTextIsWritten) {
    TestClient& client = Operator();
    Subscribe(client, {"Z1.T"});
    const std::string longest(65535, 'x');
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.T", 0, value::CVal(longest)),
              vantrel::ResultOk);
    EXPECT_THAT(Updates(client), ElementsAre("1: 190 0 " + Stamp() + " " + longest));
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.T", 0, value::CVal(longest + "x")),
              vantrel::ResultBadValue);
    EXPECT_THAT(Updates(client), ElementsAre("1: 190 0 " + Stamp() + " " + longest));
}

TEST_F(SessionTest, WritesAreRefusedWithTheirReasons) {
    TestClient& client = Operator();
    EXPECT_EQ(Modify(client, value::KindCurrent, "Brak", 0, value::CVal(1)),
              vantrel::ResultNothing);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.S", 0, value::CVal(1)),
              vantrel::ResultBadRequest);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal("abc")),
              vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(10.01)),
              vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(-0.01)),
              vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal()),
              vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.T", 0, value::CVal(std::string(65536, 'x'))),
              vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindArchive, "Z1.P", 0, value::CVal(1)),
              vantrel::ResultBadRequest);
    EXPECT_EQ(Modify(client, static_cast<value::ValueKind>(17), "Z1.P", 0, value::CVal(1)),
              vantrel::ResultBadRequest);
    value::CVal strange;
    strange.SetType(200);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, strange), vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.P", 0, strange), vantrel::ResultBadValue);

    TestClient& nobody = LogIn();
    EXPECT_EQ(Modify(nobody, value::KindCurrent, "Z1.P", 0, value::CVal(1)),
              vantrel::ResultNoAccess);
    EXPECT_EQ(Modify(nobody, value::KindCurrent, "Tajne.X", 0, value::CVal(1)),
              vantrel::ResultNothing);
    Subscribe(client, {"Z1.P"});
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(10)), vantrel::ResultOk);
    EXPECT_THAT(Updates(client), ElementsAre("1: 171 0 " + Stamp() + " 10.00"));
}

TEST_F(SessionTest, RefusedWriteBringsTheTrueValueToTheOneWhoWrote) {
    TestClient& client = Operator();
    Subscribe(client, {"Z1.T", "Z1.P"});
    TestClient& other = LogIn();
    Subscribe(other, {"Z1.P"});
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(11)),
              vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.P", m_start, value::CVal("abc")),
              vantrel::ResultBadValue);
    EXPECT_THAT(Updates(client), ElementsAre("2: 171 0 " + Stamp() + " 5.00"));
    EXPECT_THAT(Updates(other), IsEmpty());
}

TEST_F(SessionTest, SeveralWritesAreAnsweredEach) {
    TestClient& client = Operator();
    client.Say(
        vantrel::ModifyRequests{{{1, value::KindCurrent, "Z1.P", 0, value::CVal(1)},
                                 {2, value::KindHour, "Z1.P", m_start, value::CVal(2)},
                                 {3, value::KindCurrent, "Brak", 0, value::CVal(3)},
                                 {4, value::KindHour, "Z1.P", m_start - 3600, value::CVal(4)}}});
    const std::vector<vantrel::ModifyResults> atOnce = client.Take<vantrel::ModifyResults>();
    ASSERT_EQ(atOnce.size(), 1u);
    ASSERT_EQ(atOnce[0].entries.size(), 1u);
    EXPECT_EQ(atOnce[0].entries[0].id, 3u);
    EXPECT_EQ(atOnce[0].entries[0].result, vantrel::ResultNothing);
    Settle();
    const std::vector<vantrel::ModifyResults> committed = client.Take<vantrel::ModifyResults>();
    ASSERT_EQ(committed.size(), 1u);
    ASSERT_EQ(committed[0].entries.size(), 3u);
    const vantrel::RequestId ids[] = {1, 2, 4};
    for (std::size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(committed[0].entries[index].id, ids[index]);
        EXPECT_EQ(committed[0].entries[index].result, vantrel::ResultOk);
    }
}

TEST_F(SessionTest, TextWithTheCharacterOfCodeZeroIsRefused) {
    TestClient& client = Operator();
    const value::CVal text(std::string("1\0a", 3));
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.T", 0, text), vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindCurrent, "Z1.P", 0, text), vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.P", m_start, text), vantrel::ResultBadValue);
    EXPECT_EQ(ModifyArchive(client, "Z1.N", {support::Stamped(text, 100)}),
              vantrel::ResultBadValue);
}

// ---- reports and archive

TEST_F(SessionTest, ReportIsWrittenAndReadByAnyTimeOfItsPeriod) {
    TestClient& client = Operator();
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.P", m_start + 1234,
                     support::Stamped(value::CVal(7), 5, 0x8000)),
              vantrel::ResultOk);
    const std::string expected =
        "150 " + std::to_string(0x8000 | value::Status::SetByUser) + " " + Stamp() + " 7";
    EXPECT_THAT(Read(client, value::KindHour, "Z1.P", m_start, m_start), ElementsAre(expected));
    EXPECT_THAT(Read(client, value::KindHour, "Z1.P", m_start + 3599, m_start + 3599),
                ElementsAre(expected));
    EXPECT_THAT(Read(client, value::KindHour, "Z1.P", m_start + 3600, m_start + 3600),
                ElementsAre("result 1"));
    EXPECT_THAT(Read(client, value::KindDay, "Z1.P", m_start, m_start), ElementsAre("result 1"));
}

TEST_F(SessionTest, SpanIsKeptUnderItsVerySecond) {
    TestClient& client = Operator();
    EXPECT_EQ(Modify(client, value::KindSpan, "Z1.P", m_start + 3, value::CVal(7.5)),
              vantrel::ResultOk);
    EXPECT_THAT(Read(client, value::KindSpan, "Z1.P", m_start + 3, m_start + 3),
                ElementsAre("171 32 " + Stamp(3) + " 7.50"));
    EXPECT_THAT(Read(client, value::KindSpan, "Z1.P", m_start, m_start), ElementsAre("result 1"));
}

TEST_F(SessionTest, RangeHoldsItsBoundsAndMayBeEmpty) {
    TestClient& client = Operator();
    for (int hour = 0; hour < 4; ++hour) {
        Modify(client, value::KindHour, "Z1.N", m_start + hour * 3600, value::CVal(hour));
    }
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start + 3600, m_start + 7200),
                ElementsAre("150 32 " + Stamp(3600) + " 1", "150 32 " + Stamp(7200) + " 2"));
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", 0, 5), IsEmpty());
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", 7200, 3600), IsEmpty());
}

TEST_F(SessionTest, ReportWritesAreRefusedWithTheirReasons) {
    TestClient& client = Operator();
    EXPECT_EQ(Modify(client, value::KindDay, "Z1.N", m_start, value::CVal(1)),
              vantrel::ResultBadRequest);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.N", -1, value::CVal(1)),
              vantrel::ResultBadRequest);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.N", value::kLargestTime + 1, value::CVal(1)),
              vantrel::ResultBadRequest);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.N", m_start, value::CVal("x")),
              vantrel::ResultBadValue);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.N", m_start, value::CVal("1.5")),
              vantrel::ResultOk);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.T", m_start, value::CVal("x")),
              vantrel::ResultOk);
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.P", m_start, value::CVal(100)),
              vantrel::ResultOk);
    EXPECT_EQ(Modify(LogIn(), value::KindHour, "Z1.P", m_start, value::CVal(1)),
              vantrel::ResultNoAccess);
}

TEST_F(SessionTest, ValueWithoutContentMakesAReportUnknown) {
    TestClient& client = Operator();
    EXPECT_EQ(Modify(client, value::KindHour, "Z1.P", m_start, value::CVal()), vantrel::ResultOk);
    EXPECT_THAT(Read(client, value::KindHour, "Z1.P", m_start, m_start),
                ElementsAre("255 33 " + Stamp() + " "));
}

TEST_F(SessionTest, ArchiveIsWrittenAndRead) {
    TestClient& client = Operator();
    EXPECT_EQ(
        ModifyArchive(
            client, "Z1.N",
            {support::Stamped(value::CVal(1), 100), support::Stamped(value::CVal(2.7), 101, 4),
             support::Stamped(value::CVal("3"), 102), support::Stamped(value::CVal(), 103)}),
        vantrel::ResultOk);
    EXPECT_THAT(Read(client, value::KindArchive, "Z1.N", 100, 103),
                ElementsAre("150 0 100 1", "150 4 101 2", "150 0 102 3", "255 1 103 "));
    EXPECT_THAT(Read(client, value::KindArchive, "Z1.N", 101, 101), ElementsAre("150 4 101 2"));
    EXPECT_THAT(Read(client, value::KindArchive, "Z1.N", 99, 99), IsEmpty());
    EXPECT_EQ(ModifyArchive(client, "Z1.N", {}), vantrel::ResultOk);
}

TEST_F(SessionTest, ArchiveWriteIsTakenAsAWholeOrNotAtAll) {
    TestClient& client = Operator();
    EXPECT_EQ(ModifyArchive(
                  client, "Z1.P",
                  {support::Stamped(value::CVal(1), 100), support::Stamped(value::CVal(11), 101)}),
              vantrel::ResultBadValue);
    EXPECT_EQ(ModifyArchive(
                  client, "Z1.P",
                  {support::Stamped(value::CVal(1), 100), support::Stamped(value::CVal(2), -1)}),
              vantrel::ResultBadRequest);
    EXPECT_EQ(ModifyArchive(client, "Z1.S", {support::Stamped(value::CVal(1), 100)}),
              vantrel::ResultBadRequest);
    EXPECT_EQ(ModifyArchive(client, "Brak", {support::Stamped(value::CVal(1), 100)}),
              vantrel::ResultNothing);
    EXPECT_EQ(ModifyArchive(LogIn(), "Z1.P", {support::Stamped(value::CVal(1), 100)}),
              vantrel::ResultNoAccess);
    EXPECT_EQ(
        ModifyArchive(client, "Z1.P",
                      std::vector<value::CVal>(100001, support::Stamped(value::CVal(1), 100))),
        vantrel::ResultBadRequest);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 " + m_nobody +
                                "zapis ARCH, zmienna Z1.P (brak prawa do zapisu, nie przyjęto "
                                "żadnej z wartości: 1)",
                            "1 " + m_adam +
                                "zapis ARCH, zmienna Z1.P (zbyt wiele wartości w jednym zapisie, "
                                "nie przyjęto żadnej z wartości: 100001)"));
    EXPECT_THAT(Read(client, value::KindArchive, "Z1.P", 0, value::kLargestTime), IsEmpty());
}

TEST_F(SessionTest, ReadsAreRefusedWithTheirReasons) {
    TestClient& client = LogIn();
    EXPECT_THAT(Read(client, value::KindHour, "Brak", 0, 0), ElementsAre("result 1"));
    EXPECT_THAT(Read(client, value::KindHour, "Tajne.X", 0, 0), ElementsAre("result 1"));
    EXPECT_THAT(Read(client, value::KindCurrent, "Z1.P", 0, 0), ElementsAre("result 4"));
    EXPECT_THAT(Read(client, static_cast<value::ValueKind>(-3), "Z1.P", 0, 0),
                ElementsAre("result 4"));
    EXPECT_THAT(Read(client, value::KindMonth, "Z1.P", INT64_MIN, INT64_MIN),
                ElementsAre("result 4"));
    EXPECT_THAT(Read(client, value::KindMonth, "Z1.P", INT64_MAX, INT64_MAX),
                ElementsAre("result 4"));
    EXPECT_THAT(Read(client, value::KindMonth, "Z1.P", INT64_MIN, INT64_MAX), IsEmpty());
    client.Say(vantrel::ReadRequests{{{0, value::KindHour, "Z1.P", 0, 0}}});
    EXPECT_EQ(client.Take<vantrel::ReadAnswer>().at(0).result, vantrel::ResultBadRequest);
}

// ---- orders and notifications

TEST_F(SessionTest, ReportsAreMadeLoadedAndCalculated) {
    TestClient& client = Operator();
    ModifyArchive(client, "Z1.N",
                  {support::Stamped(value::CVal(10), m_start - 60),
                   support::Stamped(value::CVal(20), m_start + 1800)});
    m_clock.Advance(3600 * 1000);
    Order(client, vantrel::PeriodAction::Init, value::KindHour, "Z1.N", m_start + 5);
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start, m_start),
                ElementsAre("255 257 " + Stamp() + " "));
    Order(client, vantrel::PeriodAction::Load, value::KindHour, "Z1.N", m_start + 5);
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start, m_start),
                ElementsAre("171 384 " + Stamp() + " 15.00"));
    Modify(client, value::KindHour, "Z1.N", m_start, value::CVal(1));
    Order(client, vantrel::PeriodAction::Load, value::KindHour, "Z1.N", m_start);
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start, m_start),
                ElementsAre("150 32 " + Stamp() + " 1"));
    Order(client, vantrel::PeriodAction::Calculate, value::KindHour, "Z1.N", m_start);
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start, m_start),
                ElementsAre("171 128 " + Stamp() + " 15.00"));
}

TEST_F(SessionTest, LoadWithinTheHourTakesWhatIsThere) {
    TestClient& client = Operator();
    ModifyArchive(client, "Z1.N", {support::Stamped(value::CVal(10), m_start - 60)});
    m_clock.Advance(600 * 1000);
    Order(client, vantrel::PeriodAction::Load, value::KindHour, "Z1.N", m_start);
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start, m_start),
                ElementsAre("171 192 " + Stamp() + " 10.00"));
    Order(client, vantrel::PeriodAction::Load, value::KindHour, "Z1.N", m_start + 3600);
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start + 3600, m_start + 3600),
                ElementsAre("255 129 " + Stamp(3600) + " "));
}

TEST_F(SessionTest, SpanCanBeMadeAndNotComputed) {
    TestClient& client = Operator();
    Order(client, vantrel::PeriodAction::Load, value::KindSpan, "Z1.P", m_start + 3);
    Order(client, vantrel::PeriodAction::Calculate, value::KindSpan, "Z1.P", m_start + 3);
    EXPECT_THAT(Read(client, value::KindSpan, "Z1.P", m_start + 3, m_start + 3),
                ElementsAre("result 1"));
    Order(client, vantrel::PeriodAction::Init, value::KindSpan, "Z1.P", m_start + 3);
    EXPECT_THAT(Read(client, value::KindSpan, "Z1.P", m_start + 3, m_start + 3),
                ElementsAre("255 257 " + Stamp(3) + " "));
    Order(client, vantrel::PeriodAction::Update, value::KindArchive, "Z1.P", m_start);
    Order(client, vantrel::PeriodAction::Refresh, value::KindArchive, "Z1.P", m_start);
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(SessionTest, TermMeetsNoneOfAnEmbeddedStore) {
    TestClient& client = Operator();
    client.Say(vantrel::TakeTerm{1710068400});
    const std::vector<vantrel::TermResult> results = client.Take<vantrel::TermResult>();
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].code, 0);
    EXPECT_EQ(results[0].term, 0u);
}

TEST_F(SessionTest, ReportChangeIsToldOnceAPeriodToThoseWhoAsked) {
    TestClient& writer = Operator();
    TestClient& asked = LogIn();
    Subscribe(asked, {"Z1.P"});
    TestClient& other = LogIn();
    other.Say(vantrel::SubscribeRequest{{{1, "Z1.P"}}, {}, 0, true});
    other.messages.clear();
    Modify(writer, value::KindHour, "Z1.P", m_start, value::CVal(1));
    Modify(writer, value::KindHour, "Z1.N", m_start + 60, value::CVal(1));
    Modify(writer, value::KindDay, "Z1.P", m_start, value::CVal(1));
    EXPECT_THAT(asked.messages, IsEmpty());
    Tick();
    std::vector<std::pair<int, std::int64_t>> changes;
    for (const vantrel::ReportChange& change : asked.Take<vantrel::ReportChange>()) {
        changes.emplace_back(change.kind, change.time);
    }
    EXPECT_THAT(changes, ElementsAre(Pair(value::KindHour, m_start),
                                     Pair(value::KindDay, value::MakeLocalTime({2024, 3, 10}))));
    EXPECT_THAT(other.messages, IsEmpty());
    Tick();
    EXPECT_THAT(asked.messages, IsEmpty());
    Modify(writer, value::KindHour, "Z1.P", m_start, value::CVal(2));
    Tick();
    EXPECT_EQ(asked.Take<vantrel::ReportChange>().size(), 1u);
}

// ---- log

TEST_F(SessionTest, LogIsForThoseWithTheRight) {
    AddUser("szef", "tajne", 100);
    TestClient& chief = LogIn("szef", "tajne");
    TestClient& other = Operator();
    Subscribe(chief, {});
    Subscribe(other, {});
    LogIn();
    const std::vector<vantrel::LogMessage> told = chief.Take<vantrel::LogMessage>();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(text::ToUtf8(told[0].text), "Rejestracja użytkownika NOBODY z Kalvex_stacja");
    EXPECT_EQ(told[0].level, 2);
    EXPECT_EQ(told[0].time, m_start);
    EXPECT_THAT(other.messages, IsEmpty());

    chief.Say(vantrel::LastMessagesRequest{2});
    std::vector<std::string> lines;
    for (const vantrel::LogMessage& line : chief.Take<vantrel::LogMessage>())
        lines.push_back(text::ToUtf8(line.text));
    EXPECT_THAT(lines, ElementsAre("Rejestracja użytkownika adam z Kalvex_stacja",
                                   "Rejestracja użytkownika NOBODY z Kalvex_stacja"));
    chief.Say(vantrel::LastMessagesRequest{UINT32_MAX});
    EXPECT_EQ(chief.Take<vantrel::LogMessage>().size(), 4u);
    other.Say(vantrel::LastMessagesRequest{2});
    EXPECT_THAT(other.messages, IsEmpty());
}

TEST_F(SessionTest, LogReachesAThousandLinesBack) {
    AddUser("szef", "tajne", 100);
    TestClient& chief = LogIn("szef", "tajne");
    std::vector<std::string> expected;
    for (int i = 0; i <= 1000; ++i) {
        vantrel::LoginRequest request;
        request.clientName = "K" + std::to_string(i);
        bool answered = false;
        const auto asker = std::make_shared<char>();
        m_server->ListVariables(request, {}, asker, [&answered](const auto&) { answered = true; });
        while (!answered) m_loop.WaitAndRun();
        if (i > 0) expected.push_back("Rejestracja użytkownika NOBODY z " + request.clientName);
    }
    chief.Say(vantrel::LastMessagesRequest{UINT32_MAX});
    std::vector<std::string> lines;
    for (const vantrel::LogMessage& line : chief.Take<vantrel::LogMessage>())
        lines.push_back(text::ToUtf8(line.text));
    EXPECT_EQ(lines, expected);
}

}  // namespace
}  // namespace kalvex::server
