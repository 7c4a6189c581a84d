// Ranges thinned to so many values.
#include "server/PointScan.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>
#include <random>
#include <set>

#include "rolled_store.h"
#include "support/value_dump.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::int64_t kDay = 86400 * 20000;

std::string Dump(const value::CVal& value) {
    return std::to_string(value.GetTime() - kDay) + ":" + value::ValueToText(value) + "/" +
           std::to_string(value.GetStatus()) + "/" + std::to_string(value.GetType());
}

std::vector<std::string> Dump(const std::vector<value::CVal>& values) {
    std::vector<std::string> lines;
    for (const value::CVal& value : values) lines.push_back(Dump(value));
    return lines;
}

std::vector<std::int64_t> Times(const std::vector<value::CVal>& values) {
    std::vector<std::int64_t> times;
    for (const value::CVal& value : values) times.push_back(value.GetTime() - kDay);
    return times;
}

// ---- what the page of the data server says, from all values of a range

struct Stretch {
    const value::CVal* least = nullptr;
    const value::CVal* greatest = nullptr;
    const value::CVal* text = nullptr;
    const value::CVal* gap = nullptr;
};

void Add(Stretch& stretch, const value::CVal& value) {
    const bool isBad = (value.GetStatus() & 3) != 0;
    const bool isNumber =
        value.GetType() == 171 || (value.GetType() >= 120 && value.GetType() <= 161);
    const double number = isNumber ? value::ValueToDouble(value) : 0;
    if (isBad || !(value.IsText() || isNumber) || !std::isfinite(number)) {
        stretch.gap = &value;
    } else if (value.IsText()) {
        stretch.text = &value;
    } else {
        if (stretch.least == nullptr || number < value::ValueToDouble(*stretch.least))
            stretch.least = &value;
        if (stretch.greatest == nullptr || number > value::ValueToDouble(*stretch.greatest))
            stretch.greatest = &value;
    }
}

std::int64_t Ceiling(std::int64_t number, std::int64_t unit) {
    return (number / unit + (number % unit == 0 ? 0 : 1)) * unit;
}

std::vector<value::CVal> Thinned(const std::vector<value::CVal>& values, std::size_t points) {
    if (values.size() <= points) return values;
    const std::int64_t first = values.front().GetTime();
    const std::int64_t last = values.back().GetTime();
    const std::int64_t pieces = static_cast<std::int64_t>(points - 2) / 4 * 2;
    const std::int64_t exact = Ceiling(last - first + 1, pieces) / pieces;
    const std::int64_t unit = exact >= 36000 ? 3600 : exact >= 600 ? 60 : 1;
    const std::int64_t origin = first / unit * unit;
    const std::int64_t width = Ceiling(Ceiling(last - origin + 1, pieces) / pieces, unit);
    for (const std::int64_t joined : {1, 2}) {
        std::map<std::int64_t, Stretch> stretches;
        for (const value::CVal& value : values) {
            Add(stretches[(value.GetTime() - origin) / (joined * width)], value);
        }
        std::map<std::int64_t, value::CVal> chosen{{first, values.front()}, {last, values.back()}};
        for (const auto& [place, stretch] : stretches) {
            for (const value::CVal* value :
                 {stretch.least, stretch.greatest, stretch.text, stretch.gap}) {
                if (value != nullptr) chosen.emplace(value->GetTime(), *value);
            }
        }
        if (chosen.size() > points) continue;
        std::vector<value::CVal> answer;
        for (const auto& [time, value] : chosen) answer.push_back(value);
        return answer;
    }
    ADD_FAILURE() << "too many points";
    return {};
}

class PointScanTest : public RolledStoreTest {
  protected:
    std::vector<value::CVal> Raw(std::int64_t from, std::int64_t to, VariableId variable,
                                 value::ValueKind kind = value::KindArchive) {
        StorePiece piece = m_file->ReadRange({variable, kind, from, to, kEnough});
        EXPECT_TRUE(piece.read);
        EXPECT_FALSE(piece.more);
        return piece.values;
    }
};

TEST_F(PointScanTest, RangeOfNoMoreValuesComesWhole) {
    Fill(kDay, 10, 8);
    EXPECT_THAT(Times(Points(0, value::kLargestTime, 8)),
                ElementsAre(0, 10, 20, 30, 40, 50, 60, 70));
    EXPECT_THAT(Times(Points(kDay + 10, kDay + 30, 8)), ElementsAre(10, 20, 30));
    EXPECT_THAT(Points(kDay + 11, kDay + 19, 8), IsEmpty());
    EXPECT_THAT(Points(kDay + 30, kDay + 10, 8), IsEmpty());
    EXPECT_THAT(Points(0, value::kLargestTime, 8, 2), IsEmpty());
    Fill(kDay + 80, 10, 1);
    // Two pieces of 41 s: 0 to 40, and 50 to 80.
    EXPECT_THAT(Dump(Points(INT64_MIN, INT64_MAX, 8)),
                ElementsAre("0:0.00/0/171", "40:4.00/0/171", "70:7.00/0/171", "80:0.00/0/171"));
}

TEST_F(PointScanTest, EachPieceHasItsExtremesAndItsGaps) {
    std::vector<StoreOperation> operations;
    for (int i = 0; i < 100; ++i) operations.emplace_back(At(kDay + i, value::CVal(50)));
    operations.emplace_back(At(kDay + 10, value::CVal(90)));
    operations.emplace_back(At(kDay + 12, value::CVal(90)));
    operations.emplace_back(At(kDay + 20, value::CVal(-7), value::Status::Alarm));
    operations.emplace_back(At(kDay + 30, NoValue(), value::Status::Unknown));
    operations.emplace_back(At(kDay + 60, value::CVal(7), value::Status::Unknown));
    operations.emplace_back(At(kDay + 61, value::CVal("x")));
    Write(std::move(operations));
    EXPECT_THAT(
        Dump(Points(kDay, kDay + 99, 10)),
        ElementsAre("0:50/0/150", "10:90/0/150", "20:-7/4/150", "25:50/0/150", "30:/1/255",
                    "50:50/0/150", "60:7/1/150", "61:x/0/190", "75:50/0/150", "99:50/0/150"));
}

TEST_F(PointScanTest, GapsDoNotMakeMoreThanWasAskedFor) {
    std::vector<StoreOperation> operations;
    for (int i = 0; i < 400; ++i) {
        const std::uint16_t status = i % 5 == 0 ? value::Status::Unknown : 0;
        operations.emplace_back(i % 5 == 1 ? At(kDay + i, value::CVal("x"))
                                           : At(kDay + i, value::CVal(i), status));
    }
    Write(std::move(operations));
    // 45 pieces of 9 s would have four of them each: 23 pieces of 18 s.
    EXPECT_EQ(Points(kDay, kDay + 399, 98).size(), 23u * 4);
}

TEST_F(PointScanTest, TextsComeFromPlacesThatAreEvenlyApart) {
    std::vector<StoreOperation> operations;
    for (int i = 0; i < 1000; ++i) operations.emplace_back(At(kDay + i, value::CVal("x")));
    Write(std::move(operations));
    EXPECT_THAT(Times(Points(kDay, kDay + 999, 22)),
                ElementsAre(0, 99, 199, 299, 399, 499, 599, 699, 799, 899, 999));
}

TEST_F(PointScanTest, LongTextsComeInPieces) {
    std::vector<StoreOperation> operations;
    const std::string text(60000, 'x');
    for (int i = 0; i < 200; ++i) operations.emplace_back(At(kDay + i, value::CVal(text)));
    Write(std::move(operations));
    StoreQuery query{kX, value::KindArchive, kDay, kDay + 199, 0};
    query.scan =
        std::make_shared<PointScan>(HistoryKey{kX, value::KindArchive, kDay}, kDay + 199, 200);
    const StorePiece piece = m_file->ReadRange(query);
    EXPECT_TRUE(piece.more);
    EXPECT_EQ(piece.values.size(), kTextsOfAPiece / text.size() + 1);
    EXPECT_EQ(ReadAll(query).size(), 200 - piece.values.size());
}

TEST_F(PointScanTest, WhatIsRemovedBetweenTwoPiecesIsLeftOut) {
    Fill(kDay, 1, 5000);
    StoreQuery query{kX, value::KindArchive, kDay, kDay + 4999, 0};
    query.scan =
        std::make_shared<PointScan>(HistoryKey{kX, value::KindArchive, kDay}, kDay + 4999, 5000);
    EXPECT_EQ(m_file->ReadRange(query).values.size(), 2000u);
    Write({RemoveArchive{kX, kDay + 4990}});
    EXPECT_EQ(ReadAll(query).size(), 10u);
}

TEST_F(PointScanTest, OneStepReadsABoundedNumberOfRows) {
    for (int i = 0; i < 10; ++i) Fill(kDay + i * 10000, 1, 10000);
    StoreQuery query{kX, value::KindArchive, kDay, kDay + 99999, 0};
    query.scan =
        std::make_shared<PointScan>(HistoryKey{kX, value::KindArchive, kDay}, kDay + 99999, 100);
    for (int step = 0; step < 4; ++step) {
        const StorePiece piece = m_file->ReadRange(query);
        EXPECT_TRUE(piece.read);
        EXPECT_TRUE(piece.more);
        EXPECT_THAT(piece.values, IsEmpty());
    }
    const StorePiece last = m_file->ReadRange(query);
    EXPECT_FALSE(last.more);
    EXPECT_EQ(last.values.size(), 96u);
}

TEST_F(PointScanTest, WholeHoursAreAnsweredFromTheirRollups) {
    Fill(kDay, 60, 60 * 1000);
    RollUpTo(kDay + 60 * 60 * 1000);
    // Seen in the answer only if the row is read.
    Execute("UPDATE rollups SET gap_time = 1728000000 + 360120 WHERE time = 1728000000 + 360000");
    const auto isTold = [&](std::int64_t from) {
        const std::vector<std::int64_t> times = Times(Points(from, kDay + 60 * 60000 - 1, 100));
        return std::ranges::count(times, 360120) == 1;
    };
    EXPECT_TRUE(isTold(kDay));
    EXPECT_TRUE(isTold(kDay + 360000));
    EXPECT_FALSE(isTold(kDay + 360060));
    Write({At(kDay + 360300, value::CVal(1))});
    EXPECT_FALSE(isTold(kDay));
}

TEST_F(PointScanTest, WholeMinutesAreAnsweredFromTheirRollups) {
    Fill(kDay, 1, 20 * 3600);
    RollUpTo(kDay + 20 * 3600);
    Execute(
        "UPDATE rollups SET gap_time = 1728000000 + 3661 WHERE span = 60 AND time = 1728003660");
    // Pieces of 25 minutes.
    EXPECT_EQ(std::ranges::count(Times(Points(kDay, kDay + 20 * 3600 - 1, 100)), 3661), 1);
    EXPECT_EQ(std::ranges::count(Times(Points(kDay + 3661, kDay + 20 * 3600 - 1, 100)), 3661), 1);
    EXPECT_EQ(std::ranges::count(Times(Points(kDay + 3660, kDay + 3720, 20)), 3661), 0);
}

TEST_F(PointScanTest, ReportsAreThinnedLikewise) {
    std::vector<StoreOperation> operations;
    for (int hour = 0; hour < 3000; ++hour) {
        operations.emplace_back(PutValue{kX, value::KindHour, kDay + hour * 3600,
                                         value::CVal(double(hour * 37 % 1000))});
    }
    Write(std::move(operations));
    const std::vector<value::CVal> points =
        Points(kDay, kDay + 3000 * 3600, 200, kX, value::KindHour);
    EXPECT_GT(points.size(), 150u);
    EXPECT_THAT(
        Dump(points),
        ElementsAreArray(Dump(Thinned(Raw(kDay, kDay + 3000 * 3600, kX, value::KindHour), 200))));
}

// ---- the same from rollups and from all values

class RandomPlant {
  public:
    explicit RandomPlant(unsigned seed) : m_random(seed) {}

    std::int64_t Below(std::int64_t bound) {
        return std::uniform_int_distribution<std::int64_t>(0, bound - 1)(m_random);
    }

    value::CVal Value() {
        const std::int64_t form = Below(100);
        value::CVal value(static_cast<double>(Below(2000) - 1000) / 8);
        if (form < 20) value = value::CVal(static_cast<long long>(Below(50)));
        if (form == 20) value = value::CVal(INT64_MAX - static_cast<long long>(Below(3)));
        if (form == 21) value = value::CVal(-std::numeric_limits<double>::infinity());
        if (form == 22) value = value::CVal(std::numeric_limits<double>::quiet_NaN());
        if (form == 23) value = value::CVal("tekst");
        if (form == 24) value = NoValue();
        if (form == 25) value.SetStatus(value::Status::TransmissionError);
        if (form == 26) value.SetStatus(value::Status::Unknown);
        if (form == 27) value.SetStatus(value::Status::Alarm);
        return value;
    }

  private:
    std::mt19937 m_random;
};

class PointScanRandomTest : public PointScanTest, public testing::WithParamInterface<unsigned> {
  protected:
    static constexpr std::int64_t kLength = 40 * 86400;

    // Values of one stretch: far apart, some a minute, or one each second.
    void AddStretch() {
        const std::int64_t steps[] = {1, 1, 7, 31, 60, 600, 5000};
        const std::int64_t step = steps[m_plant.Below(std::size(steps))];
        std::int64_t time = kDay + m_plant.Below(kLength);
        std::vector<StoreOperation> operations;
        for (std::int64_t left = m_plant.Below(9000); left > 0; --left) {
            time += 1 + m_plant.Below(2 * step - 1);
            operations.emplace_back(At(time, m_plant.Value(), 0, Variable()));
            std::get<PutValue>(operations.back()).value.SetStatus(m_plant.Value().GetStatus());
        }
        Write(std::move(operations));
    }

    VariableId Variable() { return 1 + m_plant.Below(2); }

    void Change() {
        const std::int64_t time = kDay + m_plant.Below(kLength);
        switch (m_plant.Below(8)) {
            case 0:
            case 1:
                return AddStretch();
            case 2:
                Write({MarkGap{Variable(), time}});
                return;
            case 3:
                Write({RemoveArchive{Variable(), kDay + m_plant.Below(kLength / 10)}});
                return;
            case 4:
                RollUpTo(time);
                return;
            case 5:
                RollUpTo(kDay + 2 * kLength, m_plant.Below(20000));
                return;
            case 6:
                Open();
                return;
            default:
                for (int i = 0; i < 20; ++i) {
                    Write({At(kDay + m_plant.Below(kLength), m_plant.Value(), 0, Variable())});
                }
        }
    }

    void Compare() {
        const VariableId variable = Variable();
        std::int64_t from = kDay + m_plant.Below(kLength);
        std::int64_t to = from + m_plant.Below(m_plant.Below(3) == 0 ? 20000 : kLength);
        if (m_plant.Below(3) == 0) {
            from = 0;
            to = value::kLargestTime;
        }
        const std::uint32_t most[] = {8, 9, 50, 333, 1000, 6000};
        const std::uint32_t points = most[m_plant.Below(std::size(most))];
        const std::vector<value::CVal> thinned = Points(from, to, points, variable);
        ASSERT_LE(thinned.size(), points);
        ASSERT_EQ(Dump(thinned), Dump(Thinned(Raw(from, to, variable), points)))
            << from - kDay << " " << to - kDay << " " << points;
    }

    RandomPlant m_plant{GetParam()};
};

TEST_P(PointScanRandomTest, AnswerIsThatOfAllValues) {
    for (int i = 0; i < 4; ++i) AddStretch();
    for (int round = 0; round < 15; ++round) {
        Change();
        for (int i = 0; i < 4; ++i) Compare();
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PointScanRandomTest, testing::Range(1u, 7u));

}  // namespace
}  // namespace kalvex::server
