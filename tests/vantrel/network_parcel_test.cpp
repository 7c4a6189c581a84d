// Messages as bytes and back.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "sorvane.pb.h"
#include "support/network_world.h"
#include "support/value_dump.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/network/Parcel.h"

namespace kalvex::vantrel {
namespace {

namespace pb = ::sorvane::v1;
using testing::ElementsAre;
using testing::IsEmpty;

// "Łąka €", the C1 control 0x81, a NUL.
const std::string kText("\xa3\xb9ka \x80\x81\0!", 9);

value::CVal Typed(value::CVal value, std::uint16_t type) {
    value.SetType(type);
    return value;
}

std::vector<value::CVal> AllTypes() {
    return {support::Stamped(value::CVal(true), 10, 1),
            support::Stamped(value::CVal(short{-32768}), 20, 2),
            support::Stamped(value::CVal(static_cast<unsigned short>(65535)), 30, 4),
            support::Stamped(value::CVal(-2147483647), 40, 8),
            support::Stamped(value::CVal(4294967295u), 50, 16),
            support::Stamped(value::CVal(std::numeric_limits<long long>::min()), 60, 32),
            support::Stamped(Typed(value::CVal(1LL << 40), 145), 70, 64),
            support::Stamped(Typed(value::CVal(-1LL), 161), 80, 128),
            support::Stamped(value::CVal(0.1), 90, 256),
            support::Stamped(value::CVal(-0.0), 0),
            support::Stamped(value::CVal(std::numeric_limits<double>::infinity()), -1),
            support::Stamped(value::CVal(std::numeric_limits<double>::denorm_min()), 1LL << 40),
            support::Stamped(value::CVal(kText), 100, 65535),
            support::Stamped(value::CVal(std::string()), 110),
            support::Stamped(value::CVal(), 120, 3),
            support::Stamped(Typed(value::CVal(), 7), 130, 5)};
}

std::string DescribeAll(const std::vector<value::CVal>& values) {
    std::string text;
    for (const value::CVal& value : values) text += support::DescribeWhole(value) + " ";
    return text;
}

template <class Message, class Parcel>
Message Carry(const Message& message) {
    const auto packed = Pack(message);
    EXPECT_EQ(packed.parcels.size(), 1u);
    Parcel parcel;
    EXPECT_EQ(Unpack(packed.parcels.at(0), parcel), WireFault::None);
    return std::get<Message>(std::move(parcel));
}

template <class Content>
Content Carry(const Content& content) {
    if constexpr (std::is_constructible_v<ClientMessage, Content>) {
        return std::get<Content>(Carry<ClientMessage, ClientParcel>(content));
    } else {
        return std::get<Content>(Carry<ServerMessage, ServerParcel>(content));
    }
}

template <class Parcel>
WireFault FaultOf(const google::protobuf::MessageLite& message) {
    Parcel parcel;
    return Unpack(message.SerializeAsString(), parcel);
}

// ---- client to server

TEST(NetworkParcelClientTest, LoginGoesAcross) {
    const LoginRequest back = Carry(LoginRequest{2, 23, kText, "jan", "ta jne"});
    EXPECT_EQ(back.protocolVersion, 2);
    EXPECT_EQ(back.moduleType, 23);
    EXPECT_EQ(back.clientName, kText);
    EXPECT_EQ(back.user, "jan");
    EXPECT_EQ(back.password, "ta jne");
    EXPECT_EQ(back.token, "");
    EXPECT_EQ(back.pair, "");
    EXPECT_EQ(back.term, 0u);
    EXPECT_EQ(back.changesSince, std::nullopt);
}

TEST(NetworkParcelClientTest, LoginTellsOfThePastOfItsClient) {
    LoginRequest login{1, 23, "Kalvex", "jan", "", "0123abcd", kText, UINT64_MAX, UINT64_MAX - 1};
    const LoginRequest back = Carry(login);
    EXPECT_EQ(back.token, "0123abcd");
    EXPECT_EQ(back.pair, kText);
    EXPECT_EQ(back.term, UINT64_MAX);
    EXPECT_EQ(back.changesSince, UINT64_MAX - 1);
    login.changesSince = 0;
    EXPECT_EQ(Carry(login).changesSince, 0u);
}

TEST(NetworkParcelClientTest, TermGoesAcross) {
    EXPECT_EQ(Carry(TakeTerm{UINT64_MAX}).term, UINT64_MAX);
    const TermResult back = Carry(TermResult{1, UINT64_MAX});
    EXPECT_EQ(back.code, 1);
    EXPECT_EQ(back.term, UINT64_MAX);
}

TEST(NetworkParcelClientTest, AcknowledgementsGoAcross) {
    const AcknowledgeRequests back =
        Carry(AcknowledgeRequests{{{1, "A", 0}, {UINT32_MAX, kText, UINT64_MAX}}});
    ASSERT_EQ(back.requests.size(), 2u);
    EXPECT_EQ(support::Describe(ClientMessage(back)), "acknowledge 1:A 4294967295:" + kText);
    EXPECT_EQ(back.requests[0].serial, 0u);
    EXPECT_EQ(back.requests[1].serial, UINT64_MAX);
}

TEST(NetworkParcelClientTest, NameThatIsTooLongIsNotAcknowledged) {
    const PackedRequest packed =
        Pack(ClientMessage(AcknowledgeRequests{{{1, std::string(2000, 'a')}, {2, "A"}}}));
    ASSERT_EQ(packed.refusals.size(), 1u);
    EXPECT_EQ(std::get<ModifyResults>(packed.refusals[0]).entries.at(0).id, 1u);
    ASSERT_EQ(packed.parcels.size(), 1u);
}

TEST(NetworkParcelClientTest, SerialsAndTheNumberOfAnOrderGoAcross) {
    EXPECT_EQ(Carry(ModifyRequests{{{3, value::KindHour, "A", 9, value::CVal(1), UINT64_MAX}}})
                  .requests.at(0)
                  .serial,
              UINT64_MAX);
    EXPECT_EQ(Carry(ArchiveModifyRequest{3, "A", 9, 9, {value::CVal(1)}, UINT64_MAX}).serial,
              UINT64_MAX);
    EXPECT_EQ(Carry(PeriodRequest{PeriodAction::Load, value::KindHour, "A", 9, UINT32_MAX}).id,
              UINT32_MAX);
}

TEST(NetworkParcelClientTest, SubscriptionGoesAcross) {
    SubscribeRequest request{{{1, "A"}, {4294967295u, kText}}, {7, 8}, 577, true};
    SubscribeRequest back = Carry(request);
    EXPECT_EQ(support::Describe(ClientMessage(back)), support::Describe(ClientMessage(request)));
    EXPECT_EQ(back.flags, 577u);
    EXPECT_TRUE(back.last);
    request.last = false;
    EXPECT_FALSE(Carry(request).last);
    EXPECT_TRUE(Carry(SubscribeRequest{}).last);
}

TEST(NetworkParcelClientTest, RequestsGoAcross) {
    const ReadRequests reads{{{1, value::KindHour, "A", -5, 1LL << 40},
                              {2, value::KindArchive, kText, 0, 1, UINT32_MAX}}};
    EXPECT_EQ(support::Describe(ClientMessage(Carry(reads))),
              support::Describe(ClientMessage(reads)));
    const CancelRequests cancels{{1, 2, 4294967295u}};
    EXPECT_EQ(support::Describe(ClientMessage(Carry(cancels))),
              support::Describe(ClientMessage(cancels)));
    for (const PeriodAction action :
         {PeriodAction::Init, PeriodAction::Load, PeriodAction::Calculate, PeriodAction::Update,
          PeriodAction::Refresh}) {
        const PeriodRequest order{action, value::KindMonth, kText, 1710054000};
        EXPECT_EQ(support::Describe(ClientMessage(Carry(order))),
                  support::Describe(ClientMessage(order)));
    }
    EXPECT_EQ(Carry(LastMessagesRequest{50}).count, 50u);
}

TEST(NetworkParcelClientTest, WritesGoAcrossWithEveryTypeOfValue) {
    ModifyRequests writes;
    for (const value::CVal& value : AllTypes())
        writes.requests.push_back({3, value::KindCurrent, "A", 9, value});
    const ModifyRequests back = Carry(writes);
    ASSERT_EQ(back.requests.size(), writes.requests.size());
    for (std::size_t index = 0; index < back.requests.size(); ++index) {
        const ModifyRequest& request = back.requests[index];
        EXPECT_EQ(support::DescribeWhole(request.value),
                  support::DescribeWhole(writes.requests[index].value));
        EXPECT_EQ(request.id, 3u);
        EXPECT_EQ(request.kind, value::KindCurrent);
        EXPECT_EQ(request.variable, "A");
        EXPECT_EQ(request.time, 9);
    }
}

TEST(NetworkParcelClientTest, ArchiveWriteGoesAcrossWithEveryTypeOfValue) {
    const ArchiveModifyRequest back = Carry(ArchiveModifyRequest{5, kText, -1, 130, AllTypes()});
    EXPECT_EQ(back.id, 5u);
    EXPECT_EQ(back.variable, kText);
    EXPECT_EQ(back.from, -1);
    EXPECT_EQ(back.to, 130);
    EXPECT_EQ(DescribeAll(back.values), DescribeAll(AllTypes()));
}

// ---- server to client

TEST(NetworkParcelServerTest, MessagesGoAcross) {
    const ServerMessage messages[] = {
        LoginResult{0, ""},
        LoginResult{255, "brak " + kText},
        VariableDefinitions{},
        VariableDefinitions{{{"A", {}}, {kText, {{"de", kText}, {"at", "2"}, {"at", "3"}}}}, false},
        AccessErrors{{{1, 0}, {4294967295u, 65535}}},
        ReadAnswer{9, 1, {}, true},
        ReadAnswer{9, 0, AllTypes(), false},
        ModifyResults{{{1, 0}, {2, 65535}}},
        ReportChange{value::KindSpan, -7},
        LogMessage{-3, 1LL << 40, kText},
        TermResult{1, UINT64_MAX},
    };
    for (const ServerMessage& message : messages) {
        EXPECT_EQ(support::Describe((Carry<ServerMessage, ServerParcel>(message))),
                  support::Describe(message));
    }
}

TEST(NetworkParcelServerTest, SequencesOfReportChangesGoAcross) {
    EXPECT_EQ(Carry(LoginResult{0, "", UINT64_MAX}).sequence, UINT64_MAX);
    EXPECT_EQ(Carry(ReportChange{value::KindSpan, -7, UINT64_MAX}).sequence, UINT64_MAX);
}

TEST(NetworkParcelServerTest, UpdatesGoAcrossWithEveryTypeOfValue) {
    ValueUpdates updates;
    for (const value::CVal& value : AllTypes()) updates.entries.push_back({77, value});
    EXPECT_EQ(support::Describe(ServerMessage(Carry(updates))),
              support::Describe(ServerMessage(updates)));
    EXPECT_EQ(support::Describe(ServerMessage(Carry(ValueUpdates{{}, false}))), "updates more");
    EXPECT_EQ(support::Describe(ServerMessage(Carry(ValueUpdates{}))), "updates");
}

TEST(NetworkParcelServerTest, NotANumberAndMinusZeroStayWhatTheyAre) {
    const ValueUpdates back =
        Carry(ValueUpdates{{{1, value::CVal(std::nan(""))}, {2, value::CVal(-0.0)}}, true});
    EXPECT_TRUE(std::isnan(back.entries[0].value.Real()));
    EXPECT_TRUE(std::signbit(back.entries[1].value.Real()));
}

// The bytes, worked out by hand, are the contract.
TEST(NetworkParcelTest, BytesAreThoseOfTheContract) {
    using namespace std::string_literals;
    EXPECT_EQ(Pack(Heartbeat{}), "\x0a\x00"s);
    EXPECT_EQ(Pack(Farewell{4106}), "\x12\x03\x08\x8a\x20"s);
    EXPECT_EQ(Pack(Greeting{1}), "\x1a\x02\x08\x01"s);
    EXPECT_EQ(Pack(Greeting{1, "G", "b", 7}), "\x1a\x0a\x08\x01\x12\x01G\x1a\x01\x62\x20\x07"s);
    EXPECT_EQ(Pack(Farewell{4106, {"a", "b"}}), "\x12\x09\x08\x8a\x20\x12\x01\x61\x12\x01\x62"s);
    EXPECT_THAT(Pack(ClientMessage(TakeTerm{5})).parcels, ElementsAre("\x5a\x02\x08\x05"s));
    EXPECT_THAT(Pack(ClientMessage(AcknowledgeRequests{{{5, "A", 7}}})).parcels,
                ElementsAre("\xa2\x01\x09\x0a\x07\x08\x05\x12\x01\x41\x18\x07"s));
    EXPECT_THAT(Pack(ServerMessage(TermResult{1, 5})).parcels,
                ElementsAre("\x62\x04\x08\x01\x10\x05"s));
    EXPECT_THAT(Pack(ClientMessage(LoginRequest{1, 23, "", "", "", "t", "p", 5, 0})).parcels,
                ElementsAre("\x1a\x0e\x08\x01\x10\x17\x32\x01t\x3a\x01p\x40\x05\x48\x00"s));
    EXPECT_THAT(Pack(ServerMessage(LoginResult{0, "", 5})).parcels,
                ElementsAre("\x22\x02\x18\x05"s));
    EXPECT_THAT(Pack(ServerMessage(ReportChange{value::KindHour, 9, 5})).parcels,
                ElementsAre("\x52\x06\x08\x02\x10\x09\x18\x05"s));
    EXPECT_THAT(
        Pack(ClientMessage(PeriodRequest{PeriodAction::Init, value::KindHour, "A", 9, 5})).parcels,
        ElementsAre("\x4a\x0b\x08\x01\x10\x02\x1a\x01\x41\x20\x09\x28\x05"s));
    EXPECT_THAT(Pack(ClientMessage(ArchiveModifyRequest{1, "A", 2, 3, {}, 5})).parcels,
                ElementsAre("\x42\x0d\x08\x01\x12\x01\x41\x18\x02\x20\x03\x2a\x00\x30\x05"s));
    EXPECT_THAT(
        Pack(ClientMessage(ModifyRequests{{{1, value::KindHour, "A", 9, value::CVal(), 5}}}))
            .parcels,
        ElementsAre("\x3a\x12\x0a\x10\x08\x01\x10\x02\x1a\x01\x41\x20\x09\x2a\x03\x08\xff\x01"
                    "\x30\x05"s));
    // Two ints 5 and -1 of status 0 and time 3: one type, one status, one time stand for both.
    const ValueUpdates updates{
        {{1, support::Stamped(value::CVal(5), 3)}, {2, support::Stamped(value::CVal(-1), 3)}},
        true};
    EXPECT_THAT(Pack(ServerMessage(updates)).parcels,
                ElementsAre("\x32\x16"
                            "\x0a\x02\x01\x02"
                            "\x12\x10"
                            "\x08\x02\x12\x02\x96\x01\x1a\x01\x00\x22\x01\x03\x2a\x02\x0a\x01"s));
}

TEST(NetworkParcelTest, WordsOfTheTransportGoAcross) {
    ClientParcel fromClient;
    ASSERT_EQ(Unpack(Pack(Farewell{4101}), fromClient), WireFault::None);
    EXPECT_EQ(std::get<Farewell>(fromClient).reason, 4101u);
    ASSERT_EQ(Unpack(Pack(Heartbeat{}), fromClient), WireFault::None);
    EXPECT_TRUE(std::holds_alternative<Heartbeat>(fromClient));
    ServerParcel fromServer;
    ASSERT_EQ(Unpack(Pack(Farewell{4107}), fromServer), WireFault::None);
    EXPECT_EQ(std::get<Farewell>(fromServer).reason, 4107u);
    EXPECT_THAT(std::get<Farewell>(fromServer).addresses, IsEmpty());
    ASSERT_EQ(Unpack(Pack(Farewell{4107, {"db2:4300", "db1:4300"}}), fromServer), WireFault::None);
    EXPECT_THAT(std::get<Farewell>(fromServer).addresses, ElementsAre("db2:4300", "db1:4300"));
    ASSERT_EQ(Unpack(Pack(Greeting{1, kText, "db1", UINT64_MAX}), fromServer), WireFault::None);
    EXPECT_EQ(std::get<Greeting>(fromServer).source, kText);
    EXPECT_EQ(std::get<Greeting>(fromServer).node, "db1");
    EXPECT_EQ(std::get<Greeting>(fromServer).term, UINT64_MAX);
    ASSERT_EQ(Unpack(Pack(Greeting{3}), fromServer), WireFault::None);
    EXPECT_EQ(std::get<Greeting>(fromServer).protocolVersion, 3);
}

TEST(NetworkParcelTest, UnknownContentIsASignOfLife) {
    ClientParcel parcel;
    EXPECT_EQ(Unpack("\x9a\x06\x01x", parcel), WireFault::None);  // field 99
    EXPECT_TRUE(std::holds_alternative<Heartbeat>(parcel));
    EXPECT_EQ(Unpack("", parcel), WireFault::None);
    EXPECT_TRUE(std::holds_alternative<Heartbeat>(parcel));
}

TEST(NetworkParcelTest, CharactersOutsideTheCodePageBecomeQuestionMarks) {
    pb::ServerParcel in;
    in.mutable_log_message()->set_text("\u4e2d\u0142");
    ServerParcel parcel;
    ASSERT_EQ(Unpack(in.SerializeAsString(), parcel), WireFault::None);
    EXPECT_EQ(support::Describe(std::get<ServerMessage>(parcel)), "log 0 0 ?\xb3");
}

// ---- lists are cut into pieces

TEST(NetworkParcelTest, LongUpdatesAreCutByTheFieldLast) {
    for (const bool last : {true, false}) {
        ValueUpdates updates;
        updates.last = last;
        for (std::uint32_t handle = 1; handle <= 50000; ++handle) {
            updates.entries.push_back({handle, value::CVal(static_cast<int>(handle))});
        }
        const PackedAnswer packed = Pack(ServerMessage(updates));
        ASSERT_GT(packed.parcels.size(), 2u);
        std::uint32_t handle = 0;
        for (std::size_t index = 0; index < packed.parcels.size(); ++index) {
            EXPECT_LE(packed.parcels[index].size(), kMaxParcelBytes);
            ServerParcel parcel;
            ASSERT_EQ(Unpack(packed.parcels[index], parcel), WireFault::None);
            const auto& piece = std::get<ValueUpdates>(std::get<ServerMessage>(parcel));
            EXPECT_EQ(piece.last, last && index + 1 == packed.parcels.size());
            for (const ValueUpdates::Entry& entry : piece.entries) {
                EXPECT_EQ(entry.handle, ++handle);
                EXPECT_EQ(entry.value.Integer(), handle);
            }
        }
        EXPECT_EQ(handle, 50000u);
    }
}

TEST(NetworkParcelTest, EveryPieceOfAnAnswerBearsItsNumberAndOfASubscriptionItsFlags) {
    ReadAnswer answer{
        .id = 9, .result = 0, .values = std::vector<value::CVal>(50000, value::CVal(1.5))};
    const PackedAnswer answers = Pack(ServerMessage(answer));
    ASSERT_GT(answers.parcels.size(), 1u);
    std::size_t values = 0;
    for (const std::string& bytes : answers.parcels) {
        ServerParcel parcel;
        ASSERT_EQ(Unpack(bytes, parcel), WireFault::None);
        const auto& piece = std::get<ReadAnswer>(std::get<ServerMessage>(parcel));
        EXPECT_EQ(piece.id, 9u);
        values += piece.values.size();
    }
    EXPECT_EQ(values, 50000u);

    SubscribeRequest request;
    request.flags = 833;
    request.removed = {1, 2};
    for (std::uint32_t handle = 3; handle < 20000; ++handle) {
        request.added.push_back({handle, "ZMIENNA" + std::to_string(handle)});
    }
    const PackedRequest requests = Pack(ClientMessage(request));
    ASSERT_GT(requests.parcels.size(), 1u);
    SubscribeRequest joined;
    for (const std::string& bytes : requests.parcels) {
        ClientParcel parcel;
        ASSERT_EQ(Unpack(bytes, parcel), WireFault::None);
        auto& piece = std::get<SubscribeRequest>(std::get<ClientMessage>(parcel));
        EXPECT_EQ(piece.flags, 833u);
        EXPECT_EQ(piece.last, &bytes == &requests.parcels.back());
        joined.added.insert(joined.added.end(), piece.added.begin(), piece.added.end());
        joined.removed.insert(joined.removed.end(), piece.removed.begin(), piece.removed.end());
    }
    EXPECT_EQ(support::Describe(ClientMessage(joined)), support::Describe(ClientMessage(request)));
}

TEST(NetworkParcelTest, ListWithoutEntriesMakesNoParcel) {
    EXPECT_THAT(Pack(ClientMessage(ReadRequests{})).parcels, IsEmpty());
    EXPECT_THAT(Pack(ServerMessage(AccessErrors{})).parcels, IsEmpty());
}

// ---- what is beyond the bounds

TEST(NetworkParcelTest, LongestNameAndTextStillGo) {
    const SubscribeRequest request{{{1, std::string(kMaxNameBytes, 'A')}}, {}, 0, true};
    EXPECT_EQ(Carry(request).added[0].name.size(), kMaxNameBytes);
    const LogMessage message{0, 0, std::string(kMaxTextBytes, 'x')};
    EXPECT_EQ(Carry(message).text.size(), kMaxTextBytes);
}

std::vector<std::string> RefusalsOf(const ClientMessage& message, std::size_t parcels) {
    const PackedRequest packed = Pack(message);
    EXPECT_EQ(packed.parcels.size(), parcels);
    std::vector<std::string> refusals;
    for (const ServerMessage& refusal : packed.refusals)
        refusals.push_back(support::Describe(refusal));
    return refusals;
}

TEST(NetworkParcelTest, RequestBeyondTheBoundsIsAnsweredAtOnce) {
    const std::string name(kMaxNameBytes + 1, 'A');
    const value::CVal text(std::string(kMaxTextBytes / 2 + 1, '\xb9'));  // two bytes each in UTF-8
    EXPECT_THAT(RefusalsOf(SubscribeRequest{{{1, name}, {2, "B"}}, {}, 0, true}, 1),
                ElementsAre("access errors 1:4"));
    EXPECT_THAT(RefusalsOf(ReadRequests{{{1, value::KindHour, name, 0, 0}}}, 0),
                ElementsAre("answer 1 4"));
    EXPECT_THAT(RefusalsOf(ModifyRequests{{{1, value::KindCurrent, name, 0, value::CVal(1)},
                                           {2, value::KindCurrent, "B", 0, value::CVal(1)},
                                           {3, value::KindCurrent, "B", 0, text}}},
                           1),
                ElementsAre("modify results 1:4 3:4"));
    EXPECT_THAT(RefusalsOf(ArchiveModifyRequest{5, name, 0, 0, {}}, 0),
                ElementsAre("modify results 5:4"));
    EXPECT_THAT(RefusalsOf(ArchiveModifyRequest{5, "A", 0, 0, {text}}, 0),
                ElementsAre("modify results 5:4"));
    EXPECT_THAT(RefusalsOf(ArchiveModifyRequest{5, "A", 0, 0,
                                                std::vector<value::CVal>(kMaxListEntries + 1,
                                                                         value::CVal(1))},
                           0),
                ElementsAre("modify results 5:4"));
    EXPECT_THAT(RefusalsOf(ArchiveModifyRequest{5, "A", 0, 0,
                                                std::vector<value::CVal>(
                                                    9, value::CVal(std::string(500000, 'x')))},
                           0),
                ElementsAre("modify results 5:4"));
    EXPECT_THAT(RefusalsOf(LoginRequest{1, 23, name, "", ""}, 0),
                ElementsAre("login result 4 " + text::FromUtf8("nazwa jest za długa")));
    EXPECT_THAT(RefusalsOf(PeriodRequest{PeriodAction::Init, value::KindHour, name, 0}, 0),
                IsEmpty());
    EXPECT_THAT(RefusalsOf(PeriodRequest{PeriodAction::Init, value::KindHour, name, 0, 6}, 0),
                ElementsAre("modify results 6:4"));
    EXPECT_THAT(RefusalsOf(LoginRequest{1, 23, "", "", "", name}, 0),
                ElementsAre("login result 4 " + text::FromUtf8("nazwa jest za długa")));
    EXPECT_THAT(RefusalsOf(LoginRequest{1, 23, "", "", "", "", name}, 0),
                ElementsAre("login result 4 " + text::FromUtf8("nazwa jest za długa")));
}

TEST(NetworkParcelTest, AnswerBeyondTheBoundsIsLeftOutAndCounted) {
    const std::string long_(kMaxTextBytes + 1, 'x');
    const struct {
        ServerMessage message;
        std::string rest;
    } rows[] = {
        {LoginResult{1, long_}, "login result 1 "},
        {VariableDefinitions{{{std::string(kMaxNameBytes + 1, 'A'), {}}, {"B", {}}}, true},
         "definitions B{}"},
        {VariableDefinitions{{{"A", {{"de", long_}}}}, true}, "definitions"},
        {ValueUpdates{{{1, value::CVal(long_)}, {2, value::CVal(7)}}, true}, "updates 2=150:7/0@0"},
        {ReadAnswer{4, 0, {value::CVal(1), value::CVal(long_)}, true}, "answer 4 5"},
    };
    for (const auto& row : rows) {
        const PackedAnswer packed = Pack(row.message);
        EXPECT_EQ(packed.leftOut, 1u);
        ASSERT_EQ(packed.parcels.size(), 1u);
        ServerParcel parcel;
        ASSERT_EQ(Unpack(packed.parcels[0], parcel), WireFault::None);
        EXPECT_EQ(support::Describe(std::get<ServerMessage>(parcel)), row.rest);
    }
    const PackedAnswer packed = Pack(ServerMessage(LogMessage{0, 0, long_}));
    EXPECT_EQ(packed.leftOut, 1u);
    EXPECT_THAT(packed.parcels, IsEmpty());
}

// ---- what is no parcel

TEST(NetworkParcelTest, BytesThatAreNoParcelAreRefused) {
    ClientParcel parcel;
    EXPECT_EQ(Unpack("\x0a", parcel), WireFault::NotAParcel);
    EXPECT_EQ(Unpack("hello", parcel), WireFault::NotAParcel);
    EXPECT_EQ(Unpack("\x1a\x03\x1a\x01\xff", parcel), WireFault::NotAParcel);  // not UTF-8
    EXPECT_EQ(Unpack(std::string(kMaxParcelBytes + 1, '\0'), parcel), WireFault::ParcelTooLarge);
}

TEST(NetworkParcelTest, NumbersOutsideTheirRangeAreRefused) {
    pb::ClientParcel client;
    client.mutable_login()->set_module_type(65536);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NumberOutOfRange);
    client.mutable_read_requests()->add_requests()->set_kind(static_cast<pb::Kind>(7));
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NumberOutOfRange);
    client.mutable_read_requests()->mutable_requests(0)->set_kind(static_cast<pb::Kind>(-1));
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NumberOutOfRange);
    client.mutable_period_request();
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NumberOutOfRange);
    client.mutable_period_request()->set_action(static_cast<pb::PeriodAction>(6));
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NumberOutOfRange);
    client.mutable_modify_requests()->add_requests()->mutable_value()->set_type(65536);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NumberOutOfRange);
    pb::ServerParcel server;
    server.mutable_login_result()->set_code(256);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::NumberOutOfRange);
    server.mutable_report_change()->set_kind(static_cast<pb::Kind>(7));
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::NumberOutOfRange);
    server.mutable_term_result()->set_code(256);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::NumberOutOfRange);
}

TEST(NetworkParcelTest, LongNamesTextsAndListsAreRefused) {
    pb::ClientParcel client;
    const std::string longName(kMaxNameBytes + 1, 'x');
    client.mutable_login()->set_user(longName);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NameTooLong);
    client.mutable_login()->set_user("");
    client.mutable_login()->set_token(longName);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NameTooLong);
    client.mutable_login()->set_token("");
    client.mutable_login()->set_pair(longName);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NameTooLong);
    client.mutable_farewell()->add_addresses(longName);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::NameTooLong);
    pb::ServerParcel server;
    server.mutable_greeting()->set_source(longName);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::NameTooLong);
    server.mutable_greeting()->set_source("");
    server.mutable_greeting()->set_node(longName);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::NameTooLong);
    for (std::size_t index = 0; index <= kMaxAddresses; ++index)
        server.mutable_farewell()->add_addresses("a:1");
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::ListTooLong);
    pb::ModifyRequest& write = *client.mutable_modify_requests()->add_requests();
    write.mutable_value()->set_type(190);
    write.mutable_value()->set_text(std::string(kMaxTextBytes + 1, 'x'));
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::TextTooLong);
    for (std::size_t id = 0; id <= kMaxListEntries; ++id)
        client.mutable_cancel_requests()->add_ids(1);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::ListTooLong);
    pb::Values& values = *client.mutable_archive_modify_request()->mutable_values();
    values.add_types(255);
    values.set_count(4294967295u);  // a few bytes that would become many values
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::ListTooLong);
}

TEST(NetworkParcelTest, ColumnsMustBeAsLongAsTheList) {
    pb::ServerParcel server;
    pb::Values& values = *server.mutable_read_answer()->mutable_values();
    values.set_count(2);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::ColumnsDiffer);  // no types
    values.add_types(255);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::None);
    values.set_count(3);
    values.add_types(255);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::ColumnsDiffer);
    server.mutable_value_updates()->add_handles(1);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::ColumnsDiffer);
    server.mutable_access_errors()->add_codes(1);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::ColumnsDiffer);
    server.mutable_modify_results()->add_ids(1);
    EXPECT_EQ(FaultOf<ServerParcel>(server), WireFault::ColumnsDiffer);
    pb::ClientParcel client;
    client.mutable_subscribe()->add_added_handles(1);
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::ColumnsDiffer);
}

TEST(NetworkParcelTest, EmptyColumnsOfStatusAndTimeStandForZero) {
    pb::ServerParcel in;
    pb::Values& values = *in.mutable_read_answer()->mutable_values();
    values.set_count(2);
    values.add_types(150);
    values.add_integers(1);
    values.add_integers(2);
    ServerParcel parcel;
    ASSERT_EQ(Unpack(in.SerializeAsString(), parcel), WireFault::None);
    EXPECT_EQ(support::Describe(std::get<ServerMessage>(parcel)), "answer 0 0 150:1/0@0 150:2/0@0");
}

TEST(NetworkParcelTest, ValueMustHaveTheContentOfItsType) {
    for (const int type : {120, 161, 171, 190}) {
        pb::ClientParcel client;
        client.mutable_modify_requests()->add_requests()->mutable_value()->set_type(type);
        EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::ContentMissing);
        pb::Values& values = *client.mutable_archive_modify_request()->mutable_values();
        values.set_count(1);
        values.add_types(type);
        EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::ContentMissing);
    }
    pb::ClientParcel client;
    pb::Value& value = *client.mutable_modify_requests()->add_requests()->mutable_value();
    value.set_type(150);
    value.set_text("1");
    EXPECT_EQ(FaultOf<ClientParcel>(client), WireFault::ContentMissing);
}

TEST(NetworkParcelTest, FaultsHaveWords) {
    EXPECT_STREQ(WireFaultText(WireFault::NotAParcel), "to nie jest komunikat protokołu");
    EXPECT_STREQ(WireFaultText(WireFault::ContentMissing),
                 "wartość nie ma treści, którą zapowiada jej typ");
}

}  // namespace
}  // namespace kalvex::vantrel
