#include "values/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "values/Status.h"
#include "values/ValueText.h"

namespace {

int g_nAllocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++g_nAllocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace kalvex {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
const double kNaN = std::nan("");

CVal Stamped(CVal value, std::uint16_t status, std::int64_t time) {
    value.SetStatus(status);
    value.SetTime(time);
    return value;
}

CVal Typed(int type, std::int64_t number) {
    CVal value(number);
    EXPECT_TRUE(value.Cast(type));
    return value;
}

// Type and content in one text, as in "150:7".
std::string Dump(const CVal& value) {
    return std::to_string(value.GetType()) + ":" + ValueToText(value);
}

TEST(ValueConstruction, DefaultHasNoContent) {
    const CVal value;
    EXPECT_EQ(Dump(value), "255:");
    EXPECT_EQ(value.GetStatus(), 0);
    EXPECT_EQ(value.GetTime(), 0);
}

TEST(ValueConstruction, TypeFollowsTheArgument) {
    EXPECT_EQ(Dump(CVal(true)), "120:1");
    EXPECT_EQ(Dump(CVal(false)), "120:0");
    EXPECT_EQ(Dump(CVal(short{-7})), "140:-7");
    EXPECT_EQ(Dump(CVal(static_cast<unsigned short>(65535))), "141:65535");
    EXPECT_EQ(Dump(CVal(-7)), "150:-7");
    EXPECT_EQ(Dump(CVal(4294967295u)), "151:4294967295");
    EXPECT_EQ(Dump(CVal(-7L)), "160:-7");
    EXPECT_EQ(Dump(CVal(-7LL)), "160:-7");
    EXPECT_EQ(Dump(CVal(-7.5)), "171:-7.50");
    EXPECT_EQ(Dump(CVal("abc")), "190:abc");
    EXPECT_EQ(Dump(CVal(std::string("abc"))), "190:abc");
    EXPECT_EQ(Dump(CVal(std::string_view("abc"))), "190:abc");
    EXPECT_EQ(Dump(CVal(L"abc")), "190:abc");
    EXPECT_EQ(Dump(CVal(std::wstring(L"abc"))), "190:abc");
    EXPECT_EQ(Dump(CVal(std::wstring_view(L"abc"))), "190:abc");
}

TEST(ValueConstruction, HasStatusAndTime0) {
    for (const CVal& value : {CVal(1), CVal(1.5), CVal("a"), CVal(L"a"), CVal(true)}) {
        EXPECT_EQ(value.GetStatus(), 0);
        EXPECT_EQ(value.GetTime(), 0);
    }
}

TEST(ValueConstruction, WideTextIsKeptInTheCodePage) {
    EXPECT_EQ(CVal(L"Łódź").Text(), std::string_view("\xA3\xF3"
                                                     "d\x9F"));
    EXPECT_EQ(CVal(L"λ").Text(), "?");
}

TEST(ValueConstruction, ClassIsPolymorphicAndFreelyCopied) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CVal>);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<CVal>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<CVal>);
    EXPECT_TRUE(std::is_copy_constructible_v<CVal>);
}

TEST(ValueCopy, CarriesTypeStatusTimeAndContent) {
    for (const CVal& content : {CVal(), CVal(7), CVal(2.5), CVal("short"),
                                CVal("a text that is too long to be kept inside its string")}) {
        const CVal source = Stamped(content, 1, 1600000000);
        const CVal copy(source);
        EXPECT_EQ(Dump(copy), Dump(source));
        EXPECT_EQ(copy.GetStatus(), 1);
        EXPECT_EQ(copy.GetTime(), 1600000000);
        for (const CVal& old : {CVal(), CVal(-1), CVal(0.5), CVal("old"),
                                CVal("an old text that is too long to be kept in its string")}) {
            CVal assigned(old);
            assigned = source;
            EXPECT_EQ(Dump(assigned), Dump(source));
            EXPECT_EQ(assigned.GetStatus(), 1);
            EXPECT_EQ(assigned.GetTime(), 1600000000);
            CVal moved(old);
            moved = CVal(source);
            EXPECT_EQ(Dump(moved), Dump(source));
            EXPECT_EQ(moved.GetStatus(), 1);
            EXPECT_EQ(moved.GetTime(), 1600000000);
        }
        const CVal constructed{CVal(source)};
        EXPECT_EQ(Dump(constructed), Dump(source));
    }
}

TEST(ValueCopy, OwnsItsText) {
    CVal source("abc");
    const CVal copy(source);
    source += CVal("def");
    EXPECT_EQ(copy.Text(), "abc");
    EXPECT_EQ(source.Text(), "abcdef");
}

TEST(ValueCopy, ToItselfChangesNothing) {
    CVal text = Stamped(CVal("a text that is too long to be kept inside its string"), 4, 9);
    const CVal& same = text;
    text = same;
    EXPECT_EQ(Dump(text), "190:a text that is too long to be kept inside its string");
    EXPECT_EQ(text.GetStatus(), 4);
    EXPECT_EQ(text.GetTime(), 9);
}

TEST(ValueCopy, MovedTextLeavesAUsableText) {
    CVal source("a text that is too long to be kept inside its string");
    const CVal target(std::move(source));
    EXPECT_EQ(source.GetType(), 190);
    source = CVal(3);
    EXPECT_EQ(Dump(source), "150:3");
}

TEST(ValueCopy, OfANumberDoesNotAllocate) {
    const CVal numbers[] = {CVal(true), CVal(short{1}), CVal(7), CVal(7LL), CVal(2.5), CVal()};
    CVal target;
    std::int64_t sum = 0;
    const int before = g_nAllocations;
    for (const CVal& number : numbers) {
        CVal copy(number);
        target = copy;
        CVal moved(std::move(copy));
        target = std::move(moved);
        target += number;
        target = target * number;
        sum += target.GetType();
    }
    EXPECT_EQ(g_nAllocations, before);
    EXPECT_GT(sum, 0);
    const CVal text("a text that is too long to be kept inside its string");
    EXPECT_GT(g_nAllocations, before);
}

TEST(ValueStatus, AddStatusKeepsTheOtherBits) {
    CVal value(1);
    value.SetStatus(0x0020);
    value.AddStatus(0x8000);
    EXPECT_EQ(value.GetStatus(), 0x8020);
    value.SetStatus(0);
    EXPECT_EQ(value.GetStatus(), 0);
}

TEST(ValueStatus, BitsWithoutAWordAreCarried) {
    CVal value(1);
    value.SetStatus(0x3400);
    value.AddStatus(Status::Supervisory);
    EXPECT_EQ(CVal(value).GetStatus(), 0xB400);
}

TEST(ValueStatus, SupervisoryComesOffAlone) {
    CVal value(1);
    value.SetStatus(0xFFFF);
    value.SetStatus(value.GetStatus() & ~Status::Supervisory);
    EXPECT_EQ(value.GetStatus(), 0x7FFF);
}

TEST(ValueStatus, LockSetReadsAsHardlock) {
    CVal value(1);
    value.AddStatus(*StatusBit("LOCK"));
    EXPECT_EQ(value.GetStatus() & *StatusBit("HARDLOCK"), 512);
}

TEST(ValueTime, KeepsTheWholeCount) {
    CVal value(1);
    value.SetTime(253402300799, 0, 0);
    EXPECT_EQ(value.GetTime(), 253402300799);
    EXPECT_EQ(value.GetTimeW().seconds, 253402300799);
    value.SetTime(-1);
    EXPECT_EQ(value.GetTime(), -1);
}

TEST(ValueGetData, StoresTheWidthOfTheType) {
    struct CTarget {
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
        CTarget target;
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

TEST(ValueGetData, EveryPairOfTypesConverts) {
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

TEST(ValueGetData, SaturatesAtTheBoundsOfTheType) {
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

TEST(ValueGetData, FloatingValueIsTruncated) {
    EXPECT_EQ(Read<std::int32_t>(CVal(1.999), 150), 1);
    EXPECT_EQ(Read<std::int32_t>(CVal(-1.999), 150), -1);
    EXPECT_EQ(Read<std::int64_t>(CVal("-1.999"), 160), -1);
}

TEST(ValueGetData, TextWithoutANumberFailsAndStores0) {
    for (const std::string_view text : {"", "abc", "-", "x1"}) {
        std::int32_t integer = 77;
        double real = 77;
        EXPECT_FALSE(CVal(text).GetValData(150, &integer)) << text;
        EXPECT_FALSE(CVal(text).GetValData(171, &real)) << text;
        EXPECT_EQ(integer, 0);
        EXPECT_EQ(real, 0);
    }
}

TEST(ValueGetData, ValueWithoutContentReadsAs0AndEmpty) {
    std::string text = "before";
    EXPECT_EQ(Read<std::int32_t>(CVal(), 150), 0);
    EXPECT_EQ(Read<double>(CVal(), 171), 0);
    EXPECT_TRUE(CVal().GetValData(190, text));
    EXPECT_EQ(text, "");
}

TEST(ValueGetData, TypeWithoutSuchADestinationLeavesItAlone) {
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

struct CCastRow {
    CVal value;
    int type;
    std::string_view result;
};

TEST(ValueCast, ConvertsTheContent) {
    const CCastRow kRows[] = {
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
    for (const CCastRow& row : kRows) {
        CVal value = Stamped(row.value, 0x1204, 99);
        EXPECT_TRUE(value.Cast(row.type)) << row.result;
        EXPECT_EQ(Dump(value), row.result);
        EXPECT_EQ(value.GetStatus(), 0x1204);
        EXPECT_EQ(value.GetTime(), 99);
    }
}

TEST(ValueCast, ToNoTypeLeavesTheValueAndSucceeds) {
    for (const int type : {254, 255}) {
        for (const CVal& source : {CVal(5), CVal(2.5), CVal("abc"), CVal()}) {
            CVal value(source);
            EXPECT_TRUE(value.Cast(type));
            EXPECT_EQ(Dump(value), Dump(source));
        }
    }
}

TEST(ValueCast, TextThatIsNoNumberFailsAndStays) {
    for (const int type : {120, 140, 150, 160, 171}) {
        CVal value("abc");
        EXPECT_FALSE(value.Cast(type));
        EXPECT_EQ(Dump(value), "190:abc");
    }
}

TEST(ValueCast, UnknownTypeFailsAndLeavesTheValue) {
    for (const int type : {-1, 0, 119, 162, 172, 191, 65536 + 150}) {
        CVal value(5);
        EXPECT_FALSE(value.Cast(type)) << type;
        EXPECT_EQ(Dump(value), "150:5");
    }
}

TEST(ValueSetType, AlwaysTakesTheCode) {
    const CCastRow kRows[] = {
        {CVal(5), 255, "255:"},         {CVal("abc"), 255, "255:"},
        {CVal(5), 171, "171:5.00"},     {CVal("abc"), 150, "150:0"},
        {CVal("abc"), 171, "171:0.00"}, {CVal(), 150, "150:0"},
        {CVal(5), 190, "190:5"},        {CVal(5), 7, "7:"},
        {CVal("abc"), 190, "190:abc"},
    };
    for (const CCastRow& row : kRows) {
        CVal value = Stamped(row.value, 1, 99);
        value.SetType(static_cast<std::uint16_t>(row.type));
        EXPECT_EQ(Dump(value), row.result);
        EXPECT_EQ(value.GetStatus(), 1);
        EXPECT_EQ(value.GetTime(), 99);
    }
}

TEST(ValueSetType, ContentIsGoneAfterNone) {
    CVal value(5);
    value.SetType(255);
    value.SetType(150);
    EXPECT_EQ(Dump(value), "150:0");
}

using Operation = CVal& (CVal::*)(const CVal&);

struct CArithmeticRow {
    CVal left;
    Operation operation;
    CVal right;
    std::string_view result;
};

constexpr Operation kAdd = &CVal::operator+=;
constexpr Operation kSubtract = &CVal::operator-=;
constexpr Operation kMultiply = &CVal::operator*=;
constexpr Operation kDivide = &CVal::operator/=;

void ExpectResults(const std::vector<CArithmeticRow>& rows) {
    for (const CArithmeticRow& row : rows) {
        CVal value(row.left);
        const CVal right(row.right);
        EXPECT_EQ(&(value.*row.operation)(right), &value);
        EXPECT_EQ(Dump(value), row.result) << Dump(row.left) << " with " << Dump(row.right);
        EXPECT_EQ(Dump(right), Dump(row.right));
    }
}

TEST(ValueArithmetic, IntegersGiveTheWiderType) {
    ExpectResults({
        {CVal(2), kAdd, CVal(3), "150:5"},
        {CVal(2), kSubtract, CVal(3), "150:-1"},
        {CVal(2), kMultiply, CVal(3), "150:6"},
        {CVal(short{2}), kAdd, CVal(short{3}), "140:5"},
        {CVal(short{2}), kAdd, CVal(3), "150:5"},
        {CVal(2), kMultiply, CVal(short{3}), "150:6"},
        {CVal(2), kAdd, CVal(3LL), "160:5"},
        {CVal(true), kAdd, CVal(short{3}), "140:4"},
        {CVal(short{2}), kAdd, Typed(141, 3), "141:5"},
        {CVal(2), kAdd, CVal(3u), "151:5"},
        {CVal(true), kMultiply, CVal(true), "120:1"},
        {Typed(161, 2), kAdd, CVal(3LL), "161:5"},
    });
}

TEST(ValueArithmetic, WhatDoesNotFitTheWiderTypeHas64Bits) {
    ExpectResults({
        {CVal(2147483647), kAdd, CVal(1), "160:2147483648"},
        {CVal(-2147483647 - 1), kSubtract, CVal(1), "160:-2147483649"},
        {CVal(2147483647), kMultiply, CVal(2147483647), "160:4611686014132420609"},
        {CVal(short{32767}), kAdd, CVal(short{1}), "160:32768"},
        {CVal(short{32767}), kAdd, CVal(1), "150:32768"},
        {CVal(true), kAdd, CVal(true), "160:2"},
        {CVal(2u), kSubtract, CVal(3u), "160:-1"},
        {CVal(2147483647), kAdd, CVal(1u), "151:2147483648"},
        {Typed(141, 65535), kAdd, CVal(short{1}), "160:65536"},
    });
}

TEST(ValueArithmetic, WhatDoesNotFit64BitsIsADouble) {
    ExpectResults({
        {CVal(kGreatest), kAdd, CVal(1), "171:9.223372036854776e+18"},
        {CVal(kLeast), kSubtract, CVal(1), "171:-9.223372036854776e+18"},
        {CVal(kGreatest), kAdd, CVal(0), "160:9223372036854775807"},
        {CVal(kLeast), kAdd, CVal(kGreatest), "160:-1"},
        {CVal(0), kSubtract, CVal(kLeast), "171:9.223372036854776e+18"},
        {CVal(kLeast), kMultiply, CVal(-1), "171:9.223372036854776e+18"},
        {CVal(kLeast), kMultiply, CVal(1), "160:-9223372036854775808"},
        {CVal(4294967296), kMultiply, CVal(4294967296), "171:1.8446744073709552e+19"},
        {CVal(kLeast), kMultiply, CVal(kLeast), "171:8.507059173023462e+37"},
    });
}

TEST(ValueArithmetic, DoubleTakesAllToDouble) {
    ExpectResults({
        {CVal(2.5), kAdd, CVal(2), "171:4.50"},
        {CVal(2), kAdd, CVal(2.5), "171:4.50"},
        {CVal(2LL), kSubtract, CVal(0.5), "171:1.50"},
        {CVal(0.5), kMultiply, CVal(0.5), "171:0.25"},
        {CVal(2.0), kAdd, CVal(3.0), "171:5.00"},
        {CVal(1e308), kMultiply, CVal(10), "171:inf"},
        {CVal(kInfinity), kSubtract, CVal(kInfinity), "171:nan"},
    });
}

TEST(ValueArithmetic, QuotientIsADouble) {
    ExpectResults({
        {CVal(6), kDivide, CVal(3), "171:2.00"},
        {CVal(7), kDivide, CVal(2), "171:3.50"},
        {CVal(1.0), kDivide, CVal(4), "171:0.25"},
        {CVal(1), kDivide, CVal(0), "171:inf"},
        {CVal(-1), kDivide, CVal(0), "171:-inf"},
        {CVal(0), kDivide, CVal(0), "171:nan"},
        {CVal(1), kDivide, CVal(-0.0), "171:-inf"},
        {CVal("7"), kDivide, CVal("2"), "171:3.50"},
    });
}

TEST(ValueArithmetic, TextsJoinAndOtherwiseCountAsNumbers) {
    ExpectResults({
        {CVal("ab"), kAdd, CVal("cd"), "190:abcd"},
        {CVal("1"), kAdd, CVal("2"), "190:12"},
        {CVal(""), kAdd, CVal(""), "190:"},
        {CVal("1"), kAdd, CVal(2), "160:3"},
        {CVal(2), kAdd, CVal("1"), "160:3"},
        {CVal("1.5"), kAdd, CVal(2), "171:3.50"},
        {CVal("4kg"), kSubtract, CVal("1kg"), "160:3"},
        {CVal("4"), kMultiply, CVal("1.5"), "171:6.00"},
        {CVal("abc"), kAdd, CVal(2), "160:2"},
        {CVal("abc"), kMultiply, CVal(2.5), "171:0.00"},
        {CVal("9007199254740993"), kAdd, CVal(0), "160:9007199254740993"},
        {CVal("ab"), kAdd, CVal(), "160:0"},
    });
}

TEST(ValueArithmetic, NoContentCountsAsTheInt0) {
    ExpectResults({
        {CVal(), kAdd, CVal(5), "150:5"},
        {CVal(5), kSubtract, CVal(), "150:5"},
        {CVal(), kSubtract, CVal(2.5), "171:-2.50"},
        {CVal(), kAdd, CVal(), "150:0"},
        {CVal(short{5}), kMultiply, CVal(), "150:0"},
        {CVal(5), kDivide, CVal(), "171:inf"},
    });
}

TEST(ValueArithmetic, WithItself) {
    CVal number(21);
    number += number;
    EXPECT_EQ(Dump(number), "150:42");
    CVal text("a text that is too long to be kept inside its string ");
    text += text;
    EXPECT_EQ(text.Text().size(), 106u);
    CVal digits("12");
    digits *= digits;
    EXPECT_EQ(Dump(digits), "160:144");
}

TEST(ValueArithmetic, JoinsStatusWordsAndTakesTheLaterTime) {
    for (const Operation operation : {kAdd, kSubtract, kMultiply, kDivide}) {
        CVal value = Stamped(CVal(6), 0x0021, 100);
        (value.*operation)(Stamped(CVal(3), 0x8004, 200));
        EXPECT_EQ(value.GetStatus(), 0x8025);
        EXPECT_EQ(value.GetTime(), 200);
        (value.*operation)(Stamped(CVal(3.5), 0, 150));
        EXPECT_EQ(value.GetStatus(), 0x8025);
        EXPECT_EQ(value.GetTime(), 200);
    }
    CVal text = Stamped(CVal("a"), 4, 100);
    text += Stamped(CVal("b"), 32, 200);
    EXPECT_EQ(text.GetStatus(), 36);
    EXPECT_EQ(text.GetTime(), 200);
}

TEST(ValueArithmetic, ProductIsANewValue) {
    const CVal left = Stamped(CVal(6), 1, 100);
    const CVal right = Stamped(CVal(7), 2, 50);
    const CVal product = left * right;
    EXPECT_EQ(Dump(product), "150:42");
    EXPECT_EQ(product.GetStatus(), 3);
    EXPECT_EQ(product.GetTime(), 100);
    EXPECT_EQ(Dump(left), "150:6");
    EXPECT_EQ(left.GetStatus(), 1);
}

TEST(ValueArithmetic, ComplementKeepsAnIntegerTypeThatHoldsIt) {
    EXPECT_EQ(Dump(~CVal(5)), "150:-6");
    EXPECT_EQ(Dump(~CVal(short{-1})), "140:0");
    EXPECT_EQ(Dump(~CVal(kGreatest)), "160:-9223372036854775808");
    EXPECT_EQ(Dump(~CVal(5u)), "160:-6");
    EXPECT_EQ(Dump(~CVal(true)), "160:-2");
    EXPECT_EQ(Dump(~CVal(5.9)), "150:-6");
    EXPECT_EQ(Dump(~CVal(1e10)), "160:-10000000001");
    EXPECT_EQ(Dump(~CVal("5")), "160:-6");
    EXPECT_EQ(Dump(~CVal("abc")), "160:-1");
    EXPECT_EQ(Dump(~CVal()), "150:-1");
}

TEST(ValueArithmetic, ComplementKeepsStatusAndTime) {
    const CVal value = ~Stamped(CVal("5"), 36, -7);
    EXPECT_EQ(value.GetStatus(), 36);
    EXPECT_EQ(value.GetTime(), -7);
}

TEST(ValueArithmetic, PowerIsADouble) {
    EXPECT_EQ(Dump(pow(CVal(2), CVal(10))), "171:1024.00");
    EXPECT_EQ(Dump(pow(CVal(4), CVal(0.5))), "171:2.00");
    EXPECT_EQ(Dump(pow(CVal("2"), CVal(-1))), "171:0.50");
    EXPECT_EQ(Dump(pow(CVal(-1), CVal(0.5))), "171:nan");
    EXPECT_EQ(Dump(pow(CVal(), CVal())), "171:1.00");
    const CVal power = pow(Stamped(CVal(2), 1, -9), Stamped(CVal(3), 4, -5));
    EXPECT_EQ(power.GetStatus(), 5);
    EXPECT_EQ(power.GetTime(), -5);
}

// The results of == != < <= > >= in one text of digits.
std::string Comparisons(const CVal& left, const CVal& right) {
    std::string text;
    for (const int result :
         {left == right, left != right, left<right, left <= right, left> right, left >= right}) {
        text += std::to_string(result);
    }
    return text;
}

constexpr std::string_view kEqual = "100101";
constexpr std::string_view kLess = "011100";
constexpr std::string_view kGreater = "010011";
constexpr std::string_view kUnordered = "010000";

struct CComparisonRow {
    CVal left;
    CVal right;
    std::string_view result;
};

void ExpectComparisons(const std::vector<CComparisonRow>& rows) {
    for (const CComparisonRow& row : rows) {
        const std::string_view mirrored = row.result == kLess      ? kGreater
                                          : row.result == kGreater ? kLess
                                                                   : row.result;
        EXPECT_EQ(Comparisons(row.left, row.right), row.result)
            << Dump(row.left) << " with " << Dump(row.right);
        EXPECT_EQ(Comparisons(row.right, row.left), mirrored)
            << Dump(row.right) << " with " << Dump(row.left);
    }
}

TEST(ValueComparison, Numbers) {
    ExpectComparisons({
        {CVal(2), CVal(2), kEqual},
        {CVal(2), CVal(3), kLess},
        {CVal(-2), CVal(-3), kGreater},
        {CVal(short{2}), CVal(2LL), kEqual},
        {CVal(true), CVal(1), kEqual},
        {CVal(-1), CVal(4294967295u), kLess},
        {CVal(2.5), CVal(2.5), kEqual},
        {CVal(2.5), CVal(2.25), kGreater},
        {CVal(2), CVal(2.0), kEqual},
        {CVal(2), CVal(2.5), kLess},
        {CVal(3), CVal(2.5), kGreater},
        {CVal(-2), CVal(-2.5), kGreater},
        {CVal(-3), CVal(-2.5), kLess},
        {CVal(0), CVal(-0.0), kEqual},
        {CVal(0), CVal(5e-324), kLess},
        {CVal(0), CVal(-5e-324), kGreater},
    });
}

TEST(ValueComparison, LargeIntegersAreNotRounded) {
    ExpectComparisons({
        {CVal(9007199254740993), CVal(9007199254740992.0), kGreater},
        {CVal(9007199254740992), CVal(9007199254740992.0), kEqual},
        {CVal(-9007199254740993), CVal(-9007199254740992.0), kLess},
        {CVal(kGreatest), CVal(kTwoTo63), kLess},
        {CVal(kLeast), CVal(-kTwoTo63), kEqual},
        {CVal(kLeast), CVal(-9223372036854777856.0), kGreater},
        {CVal(kGreatest), CVal(9223372036854774784.0), kGreater},
        {CVal(kGreatest), CVal(kGreatest - 1), kGreater},
        {CVal(kGreatest), CVal(kInfinity), kLess},
        {CVal(kLeast), CVal(-kInfinity), kGreater},
    });
}

TEST(ValueComparison, NaNIsUnequalToAll) {
    ExpectComparisons({
        {CVal(kNaN), CVal(kNaN), kUnordered},
        {CVal(kNaN), CVal(1.0), kUnordered},
        {CVal(kNaN), CVal(1), kUnordered},
        {CVal(kNaN), CVal("1"), kUnordered},
        {CVal(kNaN), CVal("nan"), kUnordered},
        {CVal(kNaN), CVal(), kUnordered},
    });
}

TEST(ValueComparison, TextsByTheirBytes) {
    ExpectComparisons({
        {CVal("abc"), CVal("abc"), kEqual},
        {CVal("abc"), CVal("abd"), kLess},
        {CVal("abc"), CVal("ABC"), kGreater},
        {CVal("abc"), CVal("ab"), kGreater},
        {CVal(""), CVal("a"), kLess},
        {CVal("10"), CVal("9"), kLess},
        {CVal("1"), CVal("1.0"), kLess},
        {CVal("z"), CVal("\xB9"), kLess},
    });
}

TEST(ValueComparison, TextAndNumber) {
    ExpectComparisons({
        {CVal("10"), CVal(9), kGreater},
        {CVal(" 10 "), CVal(10), kEqual},
        {CVal("1e1"), CVal(10.0), kEqual},
        {CVal("9007199254740993"), CVal(9007199254740992.0), kGreater},
        {CVal("100000000000000000000"), CVal(1e20), kEqual},
        {CVal("abc"), CVal(5), kGreater},
        {CVal("5x"), CVal(5), kGreater},
        {CVal("5 x"), CVal(6.5), kLess},
        {CVal(""), CVal(0), kLess},
        {CVal("inf"), CVal(kInfinity), kEqual},
    });
}

TEST(ValueComparison, NoContentCountsAs0AndBesideATextAsEmpty) {
    ExpectComparisons({
        {CVal(), CVal(0), kEqual},
        {CVal(), CVal(), kEqual},
        {CVal(), CVal(-0.5), kGreater},
        {CVal(), CVal(1), kLess},
        {CVal(), CVal("0"), kEqual},
        {CVal(), CVal(""), kEqual},
        {CVal(), CVal("abc"), kLess},
        {CVal(), CVal("-1"), kGreater},
    });
}

TEST(ValueComparison, StatusAndTimePlayNoPart) {
    EXPECT_EQ(Comparisons(Stamped(CVal(5), 1, 100), Stamped(CVal(5), 2, 200)), kEqual);
}

}  // namespace
}  // namespace kalvex
