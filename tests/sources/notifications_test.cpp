#include <gmock/gmock.h>

#include "sources/ReportNotifications.h"
#include "support/source_world.h"

namespace kalvex::sources {
namespace {

using testing::ElementsAre;

class NotificationsTest : public support::SourceWorld {
  protected:
    // The error of a script with this line, "0" when it went through.
    std::string ErrorOf(const std::string& line) {
        engine::CKalvexDoc& document = Run("REMOTE a srv@V\n" + line, 2);
        return document.State().m_nCurrentLine == 2 ? "0" : Error(document);
    }

    static std::vector<std::int64_t> Queue(engine::CKalvexDoc& document, value::ValueKind kind) {
        const NotifyRecord* record = ReportNotifications::Of(document).Find(kind, "srv");
        if (record == nullptr) return {};
        return {record->arrTimes.begin(), record->arrTimes.end()};
    }
};

TEST_F(NotificationsTest, QueueHoldsEachTimeOnceOldestFirst) {
    Plant(
        "'reportChanges': [{'atTick': 10, 'kind': 'HREP', 'time': 200}, "
        "{'atTick': 11, 'kind': 'HREP', 'time': 100}, {'atTick': 12, 'kind': 'HREP', "
        "'time': 200}, {'atTick': 13, 'kind': 'DREP', 'time': 300}]");
    engine::CKalvexDoc& document = Start("REMOTE a srv@V\nENABLE_NOTIFY HREP srv");
    Tick(20);
    EXPECT_THAT(Queue(document, value::KindHour), ElementsAre(200, 100));
    EXPECT_THAT(Queue(document, value::KindDay), ElementsAre());
}

TEST_F(NotificationsTest, TimesAreTakenOneByOne) {
    Plant(
        "'reportChanges': [{'atTick': 5, 'kind': 'SREP', 'time': 200}, "
        "{'atTick': 6, 'kind': 'SREP', 'time': 100}]");
    engine::CKalvexDoc& document = Start(
        "REMOTE a srv@V\nENABLE_NOTIFY SREP srv\n:c\n"
        "IF TIME < 1710050410 GOTO c\nLOCAL n = NOTIFY_QUEUE_COUNT SREP srv\n"
        "LOCAL t = NOTIFY SREP srv\nLOCAL m = NOTIFYING_QUEUE_SIZE SREP srv\n"
        "LOCAL u = NOTIFY SREP srv\nLOCAL w = NOTIFY SREP srv");
    Tick(10);
    clock.Advance(60000);
    Tick(2);
    EXPECT_EQ(Value(document, "n"), "150:2");
    EXPECT_EQ(Value(document, "t"), "160:200");
    EXPECT_EQ(Value(document, "m"), "150:1");
    EXPECT_EQ(Value(document, "u"), "160:100");
    EXPECT_EQ(Value(document, "w"), "160:0");
}

TEST_F(NotificationsTest, EachKindAndDocumentHasItsQueue) {
    Plant(
        "'reportChanges': [{'atTick': 10, 'kind': 'DREP', 'time': 100}, "
        "{'atTick': 11, 'kind': 'MREP', 'time': 200}, {'atTick': 12, 'kind': 'SREP', "
        "'time': 300}]");
    engine::CKalvexDoc& first =
        Start("REMOTE a srv@V\nENABLE_NOTIFY DREP srv\nENABLE_NOTIFY MREP srv");
    engine::CKalvexDoc& second =
        Start("ENABLE_NOTIFY SREP srv\nENABLE_NOTIFY DREP srv", "drugi.kx");
    Tick(20);
    EXPECT_THAT(Queue(first, value::KindDay), ElementsAre(100));
    EXPECT_THAT(Queue(first, value::KindMonth), ElementsAre(200));
    EXPECT_THAT(Queue(first, value::KindSpan), ElementsAre());
    EXPECT_THAT(Queue(second, value::KindDay), ElementsAre(100));
    EXPECT_THAT(Queue(second, value::KindSpan), ElementsAre(300));
}

TEST_F(NotificationsTest, DisabledQueueStaysAndTakesNothing) {
    Plant(
        "'reportChanges': [{'atTick': 5, 'kind': 'HREP', 'time': 100}, "
        "{'atTick': 15, 'kind': 'HREP', 'time': 200}, {'atTick': 25, 'kind': 'HREP', "
        "'time': 300}]");
    engine::CKalvexDoc& document = Start("REMOTE a srv@V\nENABLE_NOTIFY HREP srv");
    Tick(10);
    engine::CKalvexDoc& other = document;
    EXPECT_THAT(Queue(other, value::KindHour), ElementsAre(100));
    ReportNotifications::Of(document).Find(value::KindHour, "srv")->bEnabled = false;
    Tick(10);
    EXPECT_THAT(Queue(document, value::KindHour), ElementsAre(100));
    ReportNotifications::Of(document).Find(value::KindHour, "srv")->bEnabled = true;
    Tick(10);
    EXPECT_THAT(Queue(document, value::KindHour), ElementsAre(100, 300));
}

TEST_F(NotificationsTest, DisableAndEnableInAScript) {
    Plant("'reportChanges': [{'atTick': 5, 'kind': 'HREP', 'time': 100}]");
    engine::CKalvexDoc& document = Start(
        "REMOTE a srv@V\nENABLE_NOTIFY HREP srv\nENABLE_NOTIFY HREP srv\n:c\n"
        "IF TIME < 1710050410 GOTO c\nDISABLE_NOTIFY HREP srv\n"
        "LOCAL n = NOTIFY_QUEUE_COUNT HREP srv\nLOCAL t = NOTIFY HREP srv\n"
        "ENABLE_NOTIFY HREP srv\nLOCAL u = NOTIFY HREP srv");
    Tick(10);
    clock.Advance(60000);
    Tick(2);
    EXPECT_EQ(Value(document, "n"), "150:1");
    EXPECT_EQ(Value(document, "t"), "160:0");
    EXPECT_EQ(Value(document, "u"), "160:100");
}

TEST_F(NotificationsTest, RefusedStatements) {
    EXPECT_EQ(ErrorOf("ENABLE_NOTIFY HREP inny"), "11");
    EXPECT_EQ(ErrorOf("ENABLE_NOTIFY CURDATA srv"), "11");
    EXPECT_EQ(ErrorOf("ENABLE_NOTIFY ARCH srv"), "11");
    EXPECT_EQ(ErrorOf("ENABLE_NOTIFY hrep srv"), "11");
    EXPECT_EQ(ErrorOf("ENABLE_NOTIFY"), "11");
    EXPECT_EQ(ErrorOf("DISABLE_NOTIFY HREP srv"), "11");
    EXPECT_EQ(ErrorOf("ENABLE_NOTIFY HREP srv"), "0");
}

TEST_F(NotificationsTest, NoSourcesAtAll) {
    services.sources = nullptr;
    EXPECT_EQ(Error(Run("ENABLE_NOTIFY HREP srv", 2)), "11");
    EXPECT_EQ(Value(Run("LOCAL n = NOTIFY HREP srv", 2), "n"), "160:0");
}

// The statements ask whatever sources the document has.
TEST_F(NotificationsTest, SourcesOfAnotherMake) {
    services.sources = &sources;
    engine::CKalvexDoc& document = Run("ENABLE_NOTIFY HREP srv\nENABLE_NOTIFY SREP inny", 2);
    document.Reset();
    EXPECT_THAT(sources.calls,
                testing::IsSupersetOf({"notify 2 srv", "notify 5 inny", "stop notifying 2 srv",
                                       "stop notifying 5 inny"}));
}

TEST_F(NotificationsTest, EnableWaitsForTheSource) {
    engine::CKalvexDoc& document = Start("ENABLE_NOTIFY HREP srv");
    Tick(5);
    EXPECT_EQ(document.State().m_nCurrentLine, 0);
    Start("REMOTE a srv@V", "drugi.kx");
    Tick(2);
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
}

TEST_F(NotificationsTest, FunctionsWithoutARecordGiveZero) {
    engine::CKalvexDoc& document =
        Run("LOCAL a = NOTIFY HREP srv\nLOCAL b = NOTIFY CURDATA srv\n"
            "LOCAL c = NOTIFY_QUEUE_COUNT HREP srv\n"
            "LOCAL d = NOTIFYING_QUEUE_SIZE xyz srv",
            2);
    EXPECT_EQ(Value(document, "a"), "160:0");
    EXPECT_EQ(Value(document, "b"), "160:0");
    EXPECT_EQ(Value(document, "c"), "150:0");
    EXPECT_EQ(Value(document, "d"), "150:0");
}

TEST_F(NotificationsTest, ResetTakesTheDocumentOffTheConnection) {
    Plant("'reportChanges': [{'atTick': 10, 'kind': 'HREP', 'time': 100}]");
    engine::CKalvexDoc& document =
        Start("REMOTE a srv@V\nENABLE_NOTIFY HREP srv\nENABLE_NOTIFY DREP srv");
    Tick(5);
    document.Reset();
    Tick(10);
    EXPECT_EQ(ReportNotifications::Of(document).Find(value::KindHour, "srv"), nullptr);
    EXPECT_TRUE(Connection().AddNotifyDoc(value::KindHour, document));
    EXPECT_FALSE(Connection().AddNotifyDoc(value::KindHour, document));
    EXPECT_TRUE(Connection().AddNotifyDoc(value::KindDay, document));
    EXPECT_FALSE(Connection().AddNotifyDoc(value::KindCurrent, document));
    EXPECT_FALSE(Connection().AddNotifyDoc(value::KindArchive, document));
    client->RemoveNotifyDoc(value::KindHour, "srv", document);
    client->RemoveNotifyDoc(value::KindDay, "srv", document);
    client->RemoveNotifyDoc(value::KindArchive, "srv", document);
    client->RemoveNotifyDoc(value::KindDay, "inny", document);
    EXPECT_TRUE(client->AddNotifyDoc(value::KindHour, "srv", document));
    EXPECT_FALSE(client->AddNotifyDoc(value::KindHour, "inny", document));
    client->RemoveNotifyDoc(value::KindHour, "srv", document);
}

}  // namespace
}  // namespace kalvex::sources
