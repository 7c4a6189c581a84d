// CVal, the one value type: every variable, list element, report entry, operand and formula cell
// holds one. A value carries a type code, a status word and a time stamp beside its number or text.
//
// Plain data: no locks, no script errors, no allocation for numbers. Any thread may use its own
// copies. Texts are Windows-1250 bytes and are owned by their value.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace kalvex::value {

// Type codes. Every code from IntegerFirst to IntegerLast belongs to the integer family; one of
// them without a name here holds 64 bits. Of two integer codes the greater is the wider.
namespace ValueType {
inline constexpr std::uint16_t IntegerFirst = 120;
inline constexpr std::uint16_t Bool = 120;
inline constexpr std::uint16_t Short = 140;
inline constexpr std::uint16_t UnsignedShort = 141;
inline constexpr std::uint16_t Int = 150;
inline constexpr std::uint16_t UnsignedInt = 151;
inline constexpr std::uint16_t Int64 = 160;  // also the type of a time value
inline constexpr std::uint16_t IntegerLast = 161;
inline constexpr std::uint16_t Double = 171;
inline constexpr std::uint16_t Text = 190;
inline constexpr std::uint16_t Unreadable = 254;  // an answer of GetValueType, never stored
inline constexpr std::uint16_t None = 255;

constexpr bool IsInteger(int code) {
    return code >= IntegerFirst && code <= IntegerLast;
}
}  // namespace ValueType

// The form in which archive requests carry a time stamp: 64-bit seconds since 1970-01-01 GMT.
union TIMEW {
    std::int64_t seconds;
};

class CVal {
  public:
    // A constructed value has status 0 and time 0; its type is that of the argument. A pointer is
    // never null.
    CVal() noexcept : CVal(ValueType::None, Number{0}) {}
    CVal(const CVal& other);
    CVal(CVal&& other) noexcept;  // a text is moved out, the other stays a text
    explicit CVal(bool value) noexcept : CVal(ValueType::Bool, Number{value}) {}
    explicit CVal(short value) noexcept : CVal(ValueType::Short, Number{value}) {}
    explicit CVal(unsigned short value) noexcept : CVal(ValueType::UnsignedShort, Number{value}) {}
    explicit CVal(int value) noexcept : CVal(ValueType::Int, Number{value}) {}
    explicit CVal(unsigned int value) noexcept : CVal(ValueType::UnsignedInt, Number{value}) {}
    explicit CVal(long value) noexcept : CVal(ValueType::Int64, Number{value}) {}
    explicit CVal(long long value) noexcept : CVal(ValueType::Int64, Number{value}) {}
    explicit CVal(double value) noexcept : CVal(ValueType::Double, Number{.real = value}) {}
    explicit CVal(const char* text) : CVal(std::string(text)) {}
    explicit CVal(std::string_view text) : CVal(std::string(text)) {}
    explicit CVal(std::string text) noexcept;
    explicit CVal(const wchar_t* text) : CVal(std::wstring_view(text)) {}
    explicit CVal(std::wstring_view text);  // kept as Windows-1250
    virtual ~CVal() {
        if (IsText()) m_text.~basic_string();
    }

    // The value of that type, status 0, time 0.
    CVal& operator=(double value) noexcept {
        if (IsText()) m_text.~basic_string();
        m_head = {ValueType::Double};
        m_time = 0;
        m_number.real = value;
        return *this;
    }
    // Copies type, status, time and content.
    CVal& operator=(const CVal& other);
    CVal& operator=(CVal&& other) noexcept;

    std::uint16_t GetType() const { return m_head.type; }
    // Gives the value this type whatever its content: what does not read as the type becomes 0 or
    // empty, and a type that is neither a number's nor a text's leaves no content.
    void SetType(std::uint16_t code);
    std::uint16_t GetStatus() const { return m_head.status; }
    void SetStatus(std::uint16_t word) { m_head.status = word; }
    void AddStatus(std::uint16_t bits) { m_head.status |= bits; }
    std::int64_t GetTime() const { return m_time; }
    void SetTime(std::int64_t seconds, std::uint16_t sub1 = 0, std::uint16_t sub2 = 0);
    TIMEW GetTimeW() const { return TIMEW{m_time}; }

    // Converts the content to the type and stores it at the destination: bool at 120, int16_t at
    // 140, uint16_t at 141, int32_t at 150, uint32_t at 151, int64_t at any other integer code,
    // double at 171; the second form takes a text at 190. `count` is 1 and `format` null.
    //
    // A floating value reads as an integer by truncation, and what a type cannot hold as its
    // nearest bound (NaN as 0). A text reads as its longest numeric beginning. A value without
    // content reads as 0 and as the empty text. False when a text has no number at its beginning,
    // the destination then being 0, and when the type has no such destination, which is then left
    // alone.
    bool GetValData(int type, void* destination, int count = 1, const char* format = nullptr) const;
    bool GetValData(int type, std::string& destination, int count = 1,
                    const char* format = nullptr) const;

    // Converts the value in place by the same readings; status and time stay. Casting to None or
    // Unreadable leaves it as it is and succeeds. A text that is no number fails to cast to a
    // number type and stays as it was.
    bool Cast(int type);

    // Status words of both operands are joined and the later time is taken. Two integers are
    // computed exactly: the result has the wider type, or 64 bits where it does not fit, or else is
    // a double. A quotient is a double, as is all that a double takes part in. Two texts are joined
    // by +=; otherwise a text counts as the number it reads as, and a value without content as the
    // int 0.
    CVal& operator+=(const CVal& right);
    CVal& operator-=(const CVal& right);
    CVal& operator*=(const CVal& right);
    CVal& operator/=(const CVal& right);
    CVal operator*(const CVal& right) const;
    // The complement of the value read as a 64-bit integer, in the value's own integer type (int
    // for a double, 64 bits for a text) or in 64 bits where it does not fit. Status and time are 0.
    CVal operator~() const;
    // Joins the bytes to a text, which is then as one made of the whole: status 0, time 0. They may
    // be a part of the text itself. False, with nothing changed, for a value that is no text.
    bool AppendText(std::string_view tail);
    friend CVal pow(const CVal& base, const CVal& exponent);

    // 0 or 1. Two numbers are compared exactly, two texts by their bytes, a text and a number as
    // numbers when the whole text is one and by the bytes of both texts when not. A value without
    // content counts as 0, and beside a text that is no number as the empty text. Beside a NaN only
    // != holds.
    int operator==(const CVal& right) const;
    int operator!=(const CVal& right) const;
    int operator<(const CVal& right) const;
    int operator<=(const CVal& right) const;
    int operator>(const CVal& right) const;
    int operator>=(const CVal& right) const;

    // The content seen without a conversion: only for a value of the integer family, of type
    // Double, or of type Text. The view lasts until the value changes.
    std::int64_t Integer() const { return m_number.integer; }
    double Real() const { return m_number.real; }
    std::string_view Text() const { return m_text; }
    bool IsText() const { return m_head.type == ValueType::Text; }
    bool IsReal() const { return m_head.type == ValueType::Double; }
    // A double with status 0 and time 0.
    bool IsBareReal() const {
        return std::bit_cast<std::uint64_t>(m_head) ==
                   std::bit_cast<std::uint64_t>(Head{ValueType::Double}) &&
               m_time == 0;
    }
    bool IsInteger() const { return ValueType::IsInteger(m_head.type); }

  private:
    union Number {
        std::int64_t integer;
        double real;
    };

    // Copied as the one word that it is. What writes a part of it leaves alone what does not
    // change: a value is often copied soon after, and a wide read waits for the narrow write before
    // it.
    struct Head {
        std::uint16_t type;
        std::uint16_t status = 0;
        std::uint16_t subTime1 = 0;
        std::uint16_t subTime2 = 0;
    };

    CVal(std::uint16_t type, Number number) noexcept : m_head{type}, m_time(0), m_number(number) {}

    bool IsInt() const { return m_head.type == ValueType::Int; }
    // What an operation does to two doubles or two ints stands in this header, the rest apart from
    // it.
    CVal& PutReal(double result, const CVal& right) noexcept;
    CVal& PutInt(std::int64_t result, const CVal& right) noexcept;
    CVal& AddAny(const CVal& right);
    CVal& SubtractAny(const CVal& right);
    CVal& MultiplyAny(const CVal& right);
    CVal& DivideAny(const CVal& right);
    bool GetAny(int type, void* destination) const;
    bool CastAny(int type);
    // Below, at or above 0 as the value is beside the other; NaN beside a NaN.
    double Order(const CVal& right) const;
    template <class Relation>
    int Holds(const CVal& right, Relation relation) const;
    void AssignText(const CVal& other);
    void TakeText(CVal& other) noexcept;
    void CopyStamp(const CVal& other) noexcept;
    void JoinStamp(const CVal& right) noexcept;
    void PutNumber(std::uint16_t type, Number number) noexcept;
    void PutText(std::string&& text) noexcept;
    template <class Operation>
    void Compute(const CVal& right, Operation operation);

    Head m_head;
    std::int64_t m_time;
    union {
        Number m_number;  // every type but Text; 0 where there is no content
        std::string m_text;
    };
};

// Always a double.
CVal pow(const CVal& base, const CVal& exponent);

inline void CVal::CopyStamp(const CVal& other) noexcept {
    m_head = other.m_head;
    m_time = other.m_time;
}

inline void CVal::JoinStamp(const CVal& right) noexcept {
    if ((right.m_head.status & ~m_head.status) != 0) m_head.status |= right.m_head.status;
    if (right.m_time > m_time) SetTime(right.m_time, right.m_head.subTime1, right.m_head.subTime2);
}

inline CVal::CVal(const CVal& other) {
    CopyStamp(other);
    if (other.IsText()) {
        new (&m_text) std::string(other.m_text);
    } else {
        m_number = other.m_number;
    }
}

inline CVal::CVal(CVal&& other) noexcept {
    CopyStamp(other);
    if (other.IsText()) {
        new (&m_text) std::string(std::move(other.m_text));
    } else {
        m_number = other.m_number;
    }
}

inline CVal::CVal(std::string text) noexcept
    : m_head{ValueType::Text}, m_time(0), m_text(std::move(text)) {}

inline CVal& CVal::operator=(const CVal& other) {
    if (IsText() || other.IsText()) {
        AssignText(other);
    } else {
        m_number = other.m_number;
    }
    CopyStamp(other);
    return *this;
}

inline CVal& CVal::operator=(CVal&& other) noexcept {
    if (IsText() || other.IsText()) {
        TakeText(other);
    } else {
        m_number = other.m_number;
    }
    CopyStamp(other);
    return *this;
}

inline void CVal::SetTime(std::int64_t seconds, std::uint16_t sub1, std::uint16_t sub2) {
    m_time = seconds;
    m_head.subTime1 = sub1;
    m_head.subTime2 = sub2;
}

// Of two values of one type, which stays; of ints 64 bits where it does not hold the result, which
// two of them never leave.
inline CVal& CVal::PutReal(double result, const CVal& right) noexcept {
    m_number.real = result;
    JoinStamp(right);
    return *this;
}

inline CVal& CVal::PutInt(std::int64_t result, const CVal& right) noexcept {
    m_number.integer = result;
    if (result != static_cast<std::int32_t>(result)) m_head.type = ValueType::Int64;
    JoinStamp(right);
    return *this;
}

inline bool CVal::GetValData(int type, void* destination, int, const char*) const {
    if (type != m_head.type || (!IsReal() && !IsInt())) return GetAny(type, destination);
    const auto narrow = static_cast<std::int32_t>(m_number.integer);
    if (IsReal()) {
        std::memcpy(destination, &m_number.real, sizeof m_number.real);
    } else {
        std::memcpy(destination, &narrow, sizeof narrow);
    }
    return true;
}

inline bool CVal::Cast(int type) {
    if (type == m_head.type || type == ValueType::None || type == ValueType::Unreadable)
        return true;
    return CastAny(type);
}

inline CVal& CVal::operator+=(const CVal& right) {
    if (IsReal() && right.IsReal()) return PutReal(m_number.real + right.m_number.real, right);
    if (IsInt() && right.IsInt()) return PutInt(m_number.integer + right.m_number.integer, right);
    return AddAny(right);
}

inline CVal& CVal::operator-=(const CVal& right) {
    if (IsReal() && right.IsReal()) return PutReal(m_number.real - right.m_number.real, right);
    if (IsInt() && right.IsInt()) return PutInt(m_number.integer - right.m_number.integer, right);
    return SubtractAny(right);
}

inline CVal& CVal::operator*=(const CVal& right) {
    if (IsReal() && right.IsReal()) return PutReal(m_number.real * right.m_number.real, right);
    if (IsInt() && right.IsInt()) return PutInt(m_number.integer * right.m_number.integer, right);
    return MultiplyAny(right);
}

inline CVal& CVal::operator/=(const CVal& right) {
    if (IsReal() && right.IsReal()) return PutReal(m_number.real / right.m_number.real, right);
    return DivideAny(right);
}

template <class Relation>
inline int CVal::Holds(const CVal& right, Relation relation) const {
    if (IsReal() && right.IsReal()) return relation(m_number.real, right.m_number.real);
    if (IsInteger() && right.IsInteger()) {
        return relation(m_number.integer, right.m_number.integer);
    }
    return relation(Order(right), 0.0);
}

inline int CVal::operator==(const CVal& right) const {
    if (IsText() && right.IsText()) return m_text == right.m_text;
    return Holds(right, std::equal_to<>());
}

inline int CVal::operator!=(const CVal& right) const {
    if (IsText() && right.IsText()) return m_text != right.m_text;
    return Holds(right, std::not_equal_to<>());
}

inline int CVal::operator<(const CVal& right) const {
    return Holds(right, std::less<>());
}

inline int CVal::operator<=(const CVal& right) const {
    return Holds(right, std::less_equal<>());
}

inline int CVal::operator>(const CVal& right) const {
    return Holds(right, std::greater<>());
}

inline int CVal::operator>=(const CVal& right) const {
    return Holds(right, std::greater_equal<>());
}

}  // namespace kalvex::value
