#include "value/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "support/allocation_count.h"
#include "support/value_dump.h"
#include "value/Status.h"

namespace kalvex::value {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
const double kNaN = std::nan("");

TEST(ValueConstructionTest, DefaultHasNoContent) {
    const CVal value;
    EXPECT_EQ(support::Dump(value), "255:");
    EXPECT_EQ(value.GetStatus(), 0);
    EXPECT_EQ(value.GetTime(), 0);
}

TEST(ValueConstructionTest, TypeFollowsTheArgument) {
    EXPECT_EQ(support::Dump(CVal(true)), "120:1");
    EXPECT_EQ(support::Dump(CVal(false)), "120:0");
    EXPECT_EQ(support::Dump(CVal(short{-7})), "140:-7");
    EXPECT_EQ(support::Dump(CVal(static_cast<unsigned short>(65535))), "141:65535");
    EXPECT_EQ(support::Dump(CVal(-7)), "150:-7");
    EXPECT_EQ(support::Dump(CVal(4294967295u)), "151:4294967295");
    EXPECT_EQ(support::Dump(CVal(-7L)), "160:-7");
    EXPECT_EQ(support::Dump(CVal(-7LL)), "160:-7");
    EXPECT_EQ(support::Dump(CVal(-7.5)), "171:-7.50");
    EXPECT_EQ(support::Dump(CVal("abc")), "190:abc");
    EXPECT_EQ(support::Dump(CVal(std::string("abc"))), "190:abc");
    EXPECT_EQ(support::Dump(CVal(std::string_view("abc"))), "190:abc");
    EXPECT_EQ(support::Dump(CVal(L"abc")), "190:abc");
    EXPECT_EQ(support::Dump(CVal(std::wstring(L"abc"))), "190:abc");
    EXPECT_EQ(support::Dump(CVal(std::wstring_view(L"abc"))), "190:abc");
}

TEST(ValueConstructionTest, HasStatusAndTime0) {
    for (const CVal& value : {CVal(1), CVal(1.5), CVal("a"), CVal(L"a"), CVal(true)}) {
        EXPECT_EQ(value.GetStatus(), 0);
        EXPECT_EQ(value.GetTime(), 0);
    }
}

TEST(ValueConstructionTest, WideTextIsKeptInTheCodePage) {
    EXPECT_EQ(CVal(L"Łódź").Text(), std::string_view("\xA3\xF3"
                                                     "d\x9F"));
    EXPECT_EQ(CVal(L"λ").Text(), "?");
}

TEST(ValueConstructionTest, ClassIsPolymorphicAndFreelyCopied) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CVal>);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<CVal>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<CVal>);
    EXPECT_TRUE(std::is_copy_constructible_v<CVal>);
}

TEST(ValueCopyTest, CarriesTypeStatusTimeAndContent) {
    for (const CVal& content : {CVal(), CVal(7), CVal(2.5), CVal("short"),
                                CVal("a text that is too long to be kept inside its string")}) {
        const CVal source = support::Stamped(content, 1600000000, 1);
        const CVal copy(source);
        EXPECT_EQ(support::Dump(copy), support::Dump(source));
        EXPECT_EQ(copy.GetStatus(), 1);
        EXPECT_EQ(copy.GetTime(), 1600000000);
        for (const CVal& old : {CVal(), CVal(-1), CVal(0.5), CVal("old"),
                                CVal("an old text that is too long to be kept in its string")}) {
            CVal assigned(old);
            assigned = source;
            EXPECT_EQ(support::Dump(assigned), support::Dump(source));
            EXPECT_EQ(assigned.GetStatus(), 1);
            EXPECT_EQ(assigned.GetTime(), 1600000000);
            CVal moved(old);
            moved = CVal(source);
            EXPECT_EQ(support::Dump(moved), support::Dump(source));
            EXPECT_EQ(moved.GetStatus(), 1);
            EXPECT_EQ(moved.GetTime(), 1600000000);
        }
        const CVal constructed{CVal(source)};
        EXPECT_EQ(support::Dump(constructed), support::Dump(source));
    }
}

TEST(ValueCopyTest, OwnsItsText) {
    CVal source("abc");
    const CVal copy(source);
    source += CVal("def");
    EXPECT_EQ(copy.Text(), "abc");
    EXPECT_EQ(source.Text(), "abcdef");
}

TEST(ValueCopyTest, ToItselfChangesNothing) {
    CVal text =
        support::Stamped(CVal("a text that is too long to be kept inside its string"), 9, 4);
    const CVal& same = text;
    text = same;
    EXPECT_EQ(support::Dump(text), "190:a text that is too long to be kept inside its string");
    EXPECT_EQ(text.GetStatus(), 4);
    EXPECT_EQ(text.GetTime(), 9);
}

TEST(ValueCopyTest, MovedTextLeavesAUsableText) {
    CVal source("a text that is too long to be kept inside its string");
    const CVal target(std::move(source));
    EXPECT_EQ(source.GetType(), 190);
    source = CVal(3);
    EXPECT_EQ(support::Dump(source), "150:3");
}

TEST(ValueCopyTest, OfANumberDoesNotAllocate) {
    const CVal numbers[] = {CVal(true), CVal(short{1}), CVal(7), CVal(7LL), CVal(2.5), CVal()};
    CVal target;
    std::int64_t sum = 0;
    const int before = support::AllocationCount();
    for (const CVal& number : numbers) {
        CVal copy(number);
        target = copy;
        CVal moved(std::move(copy));
        target = std::move(moved);
        target += number;
        target = target * number;
        sum += target.GetType();
    }
    EXPECT_EQ(support::AllocationCount(), before);
    EXPECT_GT(sum, 0);
    const CVal text("a text that is too long to be kept inside its string");
    EXPECT_GT(support::AllocationCount(), before);
}

TEST(ValueCopyTest, AssignedDoubleIsBare) {
    for (CVal value : {support::Stamped(CVal(7), 1000, 4), CVal(std::string(40, 'x')), CVal()}) {
        value = 2.5;
        EXPECT_EQ(support::DescribeWhole(value), "171:2.50/0@0");
        EXPECT_TRUE(value.IsBareReal());
    }
}

TEST(ValueCopyTest, BareIsADoubleWithoutStatusAndTime) {
    EXPECT_TRUE(CVal(0.0).IsBareReal());
    EXPECT_TRUE(CVal(kNaN).IsBareReal());
    EXPECT_FALSE(CVal(1).IsBareReal());
    EXPECT_FALSE(CVal("1.5").IsBareReal());
    EXPECT_FALSE(CVal().IsBareReal());
    EXPECT_FALSE(support::Stamped(CVal(1.5), 0, 1).IsBareReal());
    EXPECT_FALSE(support::Stamped(CVal(1.5), 1).IsBareReal());
    EXPECT_FALSE(support::Stamped(CVal(1.5), -1).IsBareReal());
    CVal value(1.5);
    value.SetTime(0, 1);
    EXPECT_FALSE(value.IsBareReal());
    value.SetTime(0, 0, 1);
    EXPECT_FALSE(value.IsBareReal());
}

TEST(ValueAppendTextTest, TextIsAsOneMadeAfresh) {
    CVal value = support::Stamped(CVal("ab"), 100, 5);
    EXPECT_TRUE(value.AppendText("cd"));
    EXPECT_EQ(support::Dump(value), "190:abcd");
    EXPECT_EQ(value.GetStatus(), 0);
    EXPECT_EQ(value.GetTime(), 0);
    value = support::Stamped(value, 100, 5);
    EXPECT_TRUE(value.AppendText(""));
    EXPECT_EQ(support::Dump(value), "190:abcd");
    EXPECT_EQ(value.GetTime(), 0);
}

TEST(ValueAppendTextTest, TailMayBeOfTheTextItself) {
    CVal value("abc");
    std::string wanted = "abc";
    for (int i = 0; i < 12; ++i) {
        const std::string tail = wanted.substr(1);
        EXPECT_TRUE(value.AppendText(value.Text().substr(1)));
        wanted += tail;
        EXPECT_EQ(value.Text(), wanted);
    }
}

TEST(ValueAppendTextTest, WhatIsNoTextStays) {
    for (const CVal& content : {CVal(), CVal(7), CVal(2.5)}) {
        CVal value = support::Stamped(content, 100, 5);
        EXPECT_FALSE(value.AppendText("x"));
        EXPECT_EQ(support::Dump(value), support::Dump(content));
        EXPECT_EQ(value.GetStatus(), 5);
        EXPECT_EQ(value.GetTime(), 100);
    }
}

TEST(ValueStatusTest, AddStatusKeepsTheOtherBits) {
    CVal value(1);
    value.SetStatus(0x0020);
    value.AddStatus(0x8000);
    EXPECT_EQ(value.GetStatus(), 0x8020);
    value.SetStatus(0);
    EXPECT_EQ(value.GetStatus(), 0);
}

TEST(ValueStatusTest, BitsWithoutAWordAreCarried) {
    CVal value(1);
    value.SetStatus(0x3400);
    value.AddStatus(Status::Supervisory);
    EXPECT_EQ(CVal(value).GetStatus(), 0xB400);
}

TEST(ValueStatusTest, SupervisoryComesOffAlone) {
    CVal value(1);
    value.SetStatus(0xFFFF);
    value.SetStatus(value.GetStatus() & ~Status::Supervisory);
    EXPECT_EQ(value.GetStatus(), 0x7FFF);
}

TEST(ValueStatusTest, LockSetReadsAsHardlock) {
    CVal value(1);
    value.AddStatus(*StatusBit("LOCK"));
    EXPECT_EQ(value.GetStatus() & *StatusBit("HARDLOCK"), 512);
}

TEST(ValueTimeTest, KeepsTheWholeCount) {
    CVal value(1);
    value.SetTime(253402300799, 0, 0);
    EXPECT_EQ(value.GetTime(), 253402300799);
    EXPECT_EQ(value.GetTimeW().seconds, 253402300799);
    value.SetTime(-1);
    EXPECT_EQ(value.GetTime(), -1);
}

TEST(ValueGetDataTest, StoresTheWidthOfTheType) {
    struct Target {
        std::uint64_t low = 0xAAAAAAAAAAAAAAAA;
        std::uint64_t high = 0xAAAAAAAAAAAAAAAA;
    };
    const std::pair<int, std::size_t> kWidths[] = {{120, sizeof(bool)},
                                                   {140, 2},
                                                   {141, 2},
                                                   {150, 4},
                                                   {151, 4},
                                                   {160, 8},
                                                   {161, 8},
                                                   {130, 8},
                                                   {171, 8}};
    for (const auto& [type, width] : kWidths) {
        Target target;
        EXPECT_TRUE(CVal(1).GetValData(type, &target));
        const auto* bytes = reinterpret_cast<const unsigned char*>(&target);
        EXPECT_NE(bytes[width - 1], 0xAA) << type;
        for (std::size_t i = width; i < sizeof target; ++i) EXPECT_EQ(bytes[i], 0xAA) << type;
    }
}

template <class Native>
Native Read(const CVal& value, int type) {
    Native out{};
    EXPECT_TRUE(value.GetValData(type, &out));
    return out;
}

TEST(ValueGetDataTest, EveryPairOfTypesConverts) {
    for (const CVal& value : {CVal(short{42}), CVal(42), CVal(42LL), CVal(42.0), CVal("42")}) {
        EXPECT_EQ(Read<std::int16_t>(value, 140), 42);
        EXPECT_EQ(Read<std::int32_t>(value, 150), 42);
        EXPECT_EQ(Read<std::int64_t>(value, 160), 42);
        EXPECT_EQ(Read<double>(value, 171), 42.0);
        std::string text = "before";
        EXPECT_TRUE(value.GetValData(190, text));
        EXPECT_EQ(text, value.GetType() == 171 ? "42.00" : "42");
        EXPECT_EQ(value.GetStatus(), 0);
    }
}

TEST(ValueGetDataTest, SaturatesAtTheBoundsOfTheType) {
    for (const CVal& big : {CVal(kGreatest), CVal(1e30), CVal(kInfinity), CVal("1e30"),
                            CVal("99999999999999999999999")}) {
        EXPECT_EQ(Read<bool>(big, 120), true);
        EXPECT_EQ(Read<std::int16_t>(big, 140), 32767);
        EXPECT_EQ(Read<std::uint16_t>(big, 141), 65535);
        EXPECT_EQ(Read<std::int32_t>(big, 150), 2147483647);
        EXPECT_EQ(Read<std::uint32_t>(big, 151), 4294967295u);
        EXPECT_EQ(Read<std::int64_t>(big, 160), kGreatest);
    }
    for (const CVal& small : {CVal(kLeast), CVal(-1e30), CVal(-kInfinity), CVal("-1e30"),
                              CVal("-99999999999999999999999")}) {
        EXPECT_EQ(Read<bool>(small, 120), false);
        EXPECT_EQ(Read<std::int16_t>(small, 140), -32768);
        EXPECT_EQ(Read<std::uint16_t>(small, 141), 0);
        EXPECT_EQ(Read<std::int32_t>(small, 150), -2147483647 - 1);
        EXPECT_EQ(Read<std::uint32_t>(small, 151), 0u);
        EXPECT_EQ(Read<std::int64_t>(small, 160), kLeast);
    }
    EXPECT_EQ(Read<std::int64_t>(CVal(kNaN), 160), 0);
    EXPECT_EQ(Read<std::int64_t>(CVal(kTwoTo63), 160), kGreatest);
    EXPECT_EQ(Read<std::int64_t>(CVal(-kTwoTo63), 160), kLeast);
    EXPECT_EQ(Read<std::int64_t>(CVal(9223372036854774784.0), 160), 9223372036854774784);
}

TEST(ValueGetDataTest, FloatingValueIsTruncated) {
    EXPECT_EQ(Read<std::int32_t>(CVal(1.999), 150), 1);
    EXPECT_EQ(Read<std::int32_t>(CVal(-1.999), 150), -1);
    EXPECT_EQ(Read<std::int64_t>(CVal("-1.999"), 160), -1);
}

TEST(ValueGetDataTest, TextWithoutANumberFailsAndStores0) {
    for (const std::string_view text : {"", "abc", "-", "x1"}) {
        std::int32_t integer = 77;
        double real = 77;
        EXPECT_FALSE(CVal(text).GetValData(150, &integer)) << text;
        EXPECT_FALSE(CVal(text).GetValData(171, &real)) << text;
        EXPECT_EQ(integer, 0);
        EXPECT_EQ(real, 0);
    }
}

TEST(ValueGetDataTest, ValueWithoutContentReadsAs0AndEmpty) {
    std::string text = "before";
    EXPECT_EQ(Read<std::int32_t>(CVal(), 150), 0);
    EXPECT_EQ(Read<double>(CVal(), 171), 0);
    EXPECT_TRUE(CVal().GetValData(190, text));
    EXPECT_EQ(text, "");
}

TEST(ValueGetDataTest, TypeWithoutSuchADestinationLeavesItAlone) {
    for (const int type : {0, 119, 162, 170, 172, 190, 254, 255}) {
        std::int64_t target = 77;
        EXPECT_FALSE(CVal(5).GetValData(type, &target)) << type;
        EXPECT_EQ(target, 77) << type;
    }
    for (const int type : {150, 171, 254, 255}) {
        std::string text = "before";
        EXPECT_FALSE(CVal(5).GetValData(type, text)) << type;
        EXPECT_EQ(text, "before") << type;
    }
}

struct CastRow {
    CVal value;
    int type;
    std::string_view result;
};

TEST(ValueCastTest, ConvertsTheContent) {
    const CastRow kRows[] = {
        {CVal(5), 150, "150:5"},
        {CVal(5), 160, "160:5"},
        {CVal(5), 171, "171:5.00"},
        {CVal(5), 190, "190:5"},
        {CVal(70000), 140, "140:32767"},
        {CVal(-1), 141, "141:0"},
        {CVal(5), 120, "120:1"},
        {CVal(5), 155, "155:5"},
        {CVal(2.75), 150, "150:2"},
        {CVal(-2.75), 160, "160:-2"},
        {CVal(2.75), 190, "190:2.75"},
        {CVal(kNaN), 150, "150:0"},
        {CVal("2.75x"), 171, "171:2.75"},
        {CVal("2.75x"), 150, "150:2"},
        {CVal("9007199254740993"), 160, "160:9007199254740993"},
        {CVal("1e3"), 150, "150:1000"},
        {CVal("abc"), 190, "190:abc"},
        {CVal(), 150, "150:0"},
        {CVal(), 171, "171:0.00"},
        {CVal(), 190, "190:"},
    };
    for (const CastRow& row : kRows) {
        CVal value = support::Stamped(row.value, 99, 0x1204);
        EXPECT_TRUE(value.Cast(row.type)) << row.result;
        EXPECT_EQ(support::Dump(value), row.result);
        EXPECT_EQ(value.GetStatus(), 0x1204);
        EXPECT_EQ(value.GetTime(), 99);
    }
}

TEST(ValueCastTest, ToNoTypeLeavesTheValueAndSucceeds) {
    for (const int type : {254, 255}) {
        for (const CVal& source : {CVal(5), CVal(2.5), CVal("abc"), CVal()}) {
            CVal value(source);
            EXPECT_TRUE(value.Cast(type));
            EXPECT_EQ(support::Dump(value), support::Dump(source));
        }
    }
}

TEST(ValueCastTest, TextThatIsNoNumberFailsAndStays) {
    for (const int type : {120, 140, 150, 160, 171}) {
        CVal value("abc");
        EXPECT_FALSE(value.Cast(type));
        EXPECT_EQ(support::Dump(value), "190:abc");
    }
}

TEST(ValueCastTest, UnknownTypeFailsAndLeavesTheValue) {
    for (const int type : {-1, 0, 119, 162, 172, 191, 65536 + 150}) {
        CVal value(5);
        EXPECT_FALSE(value.Cast(type)) << type;
        EXPECT_EQ(support::Dump(value), "150:5");
    }
}

TEST(ValueSetTypeTest, AlwaysTakesTheCode) {
    const CastRow kRows[] = {
        {CVal(5), 255, "255:"},         {CVal("abc"), 255, "255:"},
        {CVal(5), 171, "171:5.00"},     {CVal("abc"), 150, "150:0"},
        {CVal("abc"), 171, "171:0.00"}, {CVal(), 150, "150:0"},
        {CVal(5), 190, "190:5"},        {CVal(5), 7, "7:"},
        {CVal("abc"), 190, "190:abc"},
    };
    for (const CastRow& row : kRows) {
        CVal value = support::Stamped(row.value, 99, 1);
        value.SetType(static_cast<std::uint16_t>(row.type));
        EXPECT_EQ(support::Dump(value), row.result);
        EXPECT_EQ(value.GetStatus(), 1);
        EXPECT_EQ(value.GetTime(), 99);
    }
}

TEST(ValueSetTypeTest, ContentIsGoneAfterNone) {
    CVal value(5);
    value.SetType(255);
    value.SetType(150);
    EXPECT_EQ(support::Dump(value), "150:0");
}

}  // namespace
}  // namespace kalvex::value
