// Trends of lists and of server variables.
#include "workbench/model/RemoteTrend.h"

#include <gmock/gmock.h>

#include "support/source_world.h"
#include "workbench/model/ListTrend.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// An answer as "x:value ..." with "?" for a point without a value, or the fault.
class Answers {
  public:
    TrendSource::Answer Take() {
        return [this](TrendArchive archive) {
            std::string text;
            for (const TrendPoint& point : archive.points) {
                if (!text.empty()) text += ' ';
                text += std::to_string(point.x) + ":";
                text += point.good ? std::to_string(std::lround(point.value)) : "?";
            }
            told.push_back(archive.fault ? platform::InWords(archive.fault, {}) : text);
        };
    }

    std::vector<std::string> told;
};

class RemoteTrendTest : public support::SourceWorld {
  protected:
    static constexpr const char* kPlant =
        "'variables': {'V': {'current': [{'atTick': 1, 'value': 5}], 'archive': [{'time': "
        "'2024-03-01 "
        "00:00:00', 'value': 1}, {'time': '2024-03-01 00:00:01', 'value': 2, 'status': 1}, "
        "{'time': "
        "'2024-04-01 00:00:00', 'value': 4}]}}";

    const std::int64_t m_from = Local("2024-03-01 00:00:00");
    Answers m_answers;
};

TEST_F(RemoteTrendTest, ArchiveComesWithoutDisturbingTheScript) {
    Plant(kPlant);
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nPOINTER p\nSETPTR p = \"a\"\nMGET a ARCH FROM 2024 3 TO 2024 5\n:c\n"
            "GOTO c\n",
            1);
    Calls("");
    RemoteTrend trend(document, "p");
    trend.Request(m_from, m_from + 10, m_answers.Take());
    EXPECT_THAT(Calls("Data"), ElementsAre("AddArchiveDataRequest V 2024-03-01 00:00:00 - "
                                           "2024-03-01 00:00:10 into a list in 8000 points",
                                           "MakeArchiveDataRequest"));
    Tick(5);
    const std::string first = std::to_string(m_from);
    EXPECT_THAT(m_answers.told, ElementsAre(first + ":1 " + std::to_string(m_from + 1) + ":?"));
    EXPECT_EQ(Link(document, "a").GetArchValues().GetSize(), 3u);
    EXPECT_EQ(Link(document, "a").GetRequestState(value::KindArchive), sources::RequestReady);
}

TEST_F(RemoteTrendTest, NewRequestTakesThePlaceOfTheFormerOne) {
    Plant(kPlant);
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nSLEEP 60\n", 5);
    {
        RemoteTrend trend(document, "a");
        trend.Request(m_from, m_from + 10, m_answers.Take());
        trend.Request(m_from, m_from, m_answers.Take());
        Tick(5);
        EXPECT_THAT(m_answers.told, ElementsAre(std::to_string(m_from) + ":1"));
        Calls("");
        trend.Request(m_from, m_from + 10, m_answers.Take());
    }
    EXPECT_THAT(Calls("Cancel"), ElementsAre("CancelArchiveDataRequest"));
    Tick(5);
    EXPECT_EQ(m_answers.told.size(), 1u);
}

TEST_F(RemoteTrendTest, AnswerMayEndTheTrend) {
    Plant(kPlant);
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nSLEEP 60\n", 5);
    auto trend = std::make_unique<RemoteTrend>(document, "a");
    trend->Request(m_from, m_from, [&trend](const TrendArchive&) { trend.reset(); });
    Tick(5);
    EXPECT_EQ(trend, nullptr);
}

TEST_F(RemoteTrendTest, WhyThereIsNoArchive) {
    Plant("'variables': {'V': {'readError': 2}, 'W': {'readError': 77}}");
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nREMOTE b srv@W\nLOCAL c = 1\nSLEEP 60\n", 5);
    for (const char* const name : {"a", "b", "c", "d"}) {
        RemoteTrend trend(document, name);
        trend.Request(m_from, m_from + 10, m_answers.Take());
        Tick(5);
    }
    EXPECT_THAT(m_answers.told, ElementsAre("Brak dostępu do archiwum zmiennej a",
                                            "Źródło odmówiło archiwum zmiennej b (77)",
                                            "Skrypt nie ma teraz zmiennej zdalnej c",
                                            "Skrypt nie ma teraz zmiennej zdalnej d"));
}

TEST_F(RemoteTrendTest, LiveValueIsNotThatOfALock) {
    Plant(
        "'variables': {'V': {'attributes': {'un': 'bar'}, 'current': [{'atTick': 1, 'value': 5}, "
        "{'atTick': 9, 'value': 6}]}}");
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nLOCK\nSLEEP 60\n", 8);
    RemoteTrend trend(document, "a");
    EXPECT_TRUE(trend.IsTime());
    EXPECT_EQ(trend.ReadLive(100)->value, 5);
    EXPECT_EQ(trend.ReadLive(100)->x, 100);
    Tick(5);
    EXPECT_EQ(trend.ReadLive(101)->value, 6);
    EXPECT_EQ(trend.GetName(), "a");
    EXPECT_EQ(trend.GetUnit(), "bar");
    document.Reset();
    EXPECT_FALSE(trend.ReadLive(102));
    EXPECT_EQ(trend.GetUnit(), "");
}

TEST_F(RemoteTrendTest, ListIsATrendOfItsElements) {
    engine::CKalvexDoc& document =
        Run("LIST L\nADD L 3\nADD L \"x\"\nADD L 5\nPOINTER p\nSETPTR p = \"L\"\nSLEEP 60\n");
    ListTrend trend(document, "p");
    EXPECT_FALSE(trend.IsTime());
    EXPECT_FALSE(trend.ReadLive(1));
    EXPECT_EQ(trend.GetUnit(), "");
    trend.Request(0, 0, m_answers.Take());
    const std::uint64_t version = trend.GetVersion();
    EXPECT_EQ(trend.GetVersion(), version);
    auto& list = static_cast<operands::CVariableList&>(*document.Variables().Find("L"));
    list.Add(value::CVal(7));
    const std::uint64_t longer = trend.GetVersion();
    EXPECT_NE(longer, version);
    list.MoveFirst();
    list.SetValue(value::CVal(4), value::KindCurrent);
    EXPECT_NE(trend.GetVersion(), longer);
    trend.Request(0, 0, m_answers.Take());
    document.Reset();
    trend.Request(0, 0, m_answers.Take());
    EXPECT_THAT(m_answers.told,
                ElementsAre("0:3 1:? 2:5", "0:4 1:? 2:5 3:7", "Skrypt nie ma teraz listy p"));
    EXPECT_EQ(trend.GetVersion(), 0u);
}

}  // namespace
}  // namespace kalvex::workbench
