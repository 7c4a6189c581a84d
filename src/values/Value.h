// CVal, the one value type: every variable, list element, report entry, operand and formula cell
// holds one. A value carries a type code, a status word and a time stamp beside its number or text.
//
// Plain data: no locks, no script errors, no allocation for numbers. Any thread may use its own
// copies. Texts are Windows-1250 bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kalvex {

// Type codes. Every code from IntegerFirst to IntegerLast belongs to the integer family.
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

constexpr bool IsInteger(int code) { return code >= IntegerFirst && code <= IntegerLast; }
}  // namespace ValueType

// The form in which archive requests carry a time stamp: 64-bit seconds since 1970-01-01 GMT.
union TIMEW {
    std::int64_t seconds;
};

class CVal {
  public:
    CVal() noexcept;  // type None, status 0, time 0
    CVal(const CVal& other);
    CVal(CVal&& other) noexcept;
    explicit CVal(bool value) noexcept;
    explicit CVal(short value) noexcept;
    explicit CVal(unsigned short value) noexcept;
    explicit CVal(int value) noexcept;
    explicit CVal(unsigned int value) noexcept;
    explicit CVal(long value) noexcept;       // Int64
    explicit CVal(long long value) noexcept;  // Int64
    explicit CVal(double value) noexcept;
    explicit CVal(const char* text);
    explicit CVal(std::string_view text);
    explicit CVal(std::string text) noexcept;
    explicit CVal(const wchar_t* text);       // kept as Windows-1250
    explicit CVal(std::wstring_view text);    // kept as Windows-1250
    virtual ~CVal();

    // Copies type, status, time and content.
    CVal& operator=(const CVal& other);
    CVal& operator=(CVal&& other) noexcept;

    std::uint16_t GetType() const { return m_nType; }
    void SetType(std::uint16_t code);  // the number, if any, is kept and read as the new type
    std::uint16_t GetStatus() const { return m_nStatus; }
    void SetStatus(std::uint16_t word) { m_nStatus = word; }
    void AddStatus(std::uint16_t bits) { m_nStatus |= bits; }
    std::int64_t GetTime() const { return m_tTime; }
    void SetTime(std::int64_t seconds, std::uint16_t sub1 = 0, std::uint16_t sub2 = 0);
    TIMEW GetTimeW() const { return TIMEW{m_tTime}; }

    // Converts the content to the type and stores it at the destination: 140 int16_t, 150 int32_t,
    // 160 int64_t, 171 double; other integer codes their own width. False when the content does not
    // read as the type; the destination is then 0 or empty. `count` is 1 and `format` null.
    bool GetValData(int type, void* destination, int count = 1, const char* format = nullptr) const;
    bool GetValData(int type, std::string& destination, int count = 1,
                    const char* format = nullptr) const;

    // Converts the value in place. Casting to None or Unreadable leaves it as it is and succeeds.
    // A text that is no number fails to cast to a number type and stays as it was.
    bool Cast(int type);

    CVal& operator+=(const CVal& right);
    CVal& operator-=(const CVal& right);
    CVal& operator*=(const CVal& right);
    CVal& operator/=(const CVal& right);
    CVal operator*(const CVal& right) const;
    CVal operator~() const;
    friend CVal pow(const CVal& base, const CVal& exponent);

    int operator==(const CVal& right) const;
    int operator!=(const CVal& right) const;
    int operator<(const CVal& right) const;
    int operator<=(const CVal& right) const;
    int operator>(const CVal& right) const;
    int operator>=(const CVal& right) const;

    // The content seen without a conversion: only for a value of the integer family, of type Double,
    // or of type Text.
    std::int64_t Integer() const { return m_content.integer; }
    double Real() const { return m_content.real; }
    std::string_view Text() const { return *m_content.text; }
    bool IsText() const { return m_nType == ValueType::Text; }

  private:
    union Content {
        std::int64_t integer;
        double real;
        std::string* text;
    };
    std::uint16_t m_nType;
    std::uint16_t m_nStatus;
    std::uint16_t m_nSubTime1;
    std::uint16_t m_nSubTime2;
    std::int64_t m_tTime;
    Content m_content;
};

CVal pow(const CVal& base, const CVal& exponent);

}  // namespace kalvex
