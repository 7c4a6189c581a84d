#include "value/Value.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <compare>
#include <cstring>
#include <limits>

#include "text/CodePage.h"
#include "value/Bounds.h"
#include "value/ValueText.h"

namespace kalvex::value {

namespace {

__extension__ using WideInteger = __int128;

constexpr double kTwoTo63 = 9223372036854775808.0;

// A number apart from the value that holds it: the double when the type is Double, else the
// integer.
struct Operand {
    std::uint16_t type;
    std::int64_t integer;
    double real;

    bool IsReal() const { return type == ValueType::Double; }
    double AsReal() const { return IsReal() ? real : static_cast<double>(integer); }
};

struct IntegerForm {
    std::int64_t least;
    std::int64_t greatest;
    void (*store)(std::int64_t number, void* destination);
};

template <class Native>
constexpr IntegerForm FormOf() {
    return {std::numeric_limits<Native>::min(), std::numeric_limits<Native>::max(),
            [](std::int64_t number, void* destination) {
                const Native native = static_cast<Native>(number);
                std::memcpy(destination, &native, sizeof native);
            }};
}

constexpr int kIntegerCodes = ValueType::IntegerLast - ValueType::IntegerFirst + 1;

// By the type code, counted from the first of the integer family.
constexpr std::array<IntegerForm, kIntegerCodes> kIntegerForms = [] {
    std::array<IntegerForm, kIntegerCodes> forms{};
    forms.fill(FormOf<std::int64_t>());
    forms[ValueType::Bool - ValueType::IntegerFirst] = FormOf<bool>();
    forms[ValueType::Short - ValueType::IntegerFirst] = FormOf<std::int16_t>();
    forms[ValueType::UnsignedShort - ValueType::IntegerFirst] = FormOf<std::uint16_t>();
    forms[ValueType::Int - ValueType::IntegerFirst] = FormOf<std::int32_t>();
    forms[ValueType::UnsignedInt - ValueType::IntegerFirst] = FormOf<std::uint32_t>();
    return forms;
}();

const IntegerForm& FormOfType(int type) {
    return kIntegerForms[type - ValueType::IntegerFirst];
}

bool Fits(std::int64_t number, int type) {
    const IntegerForm& form = FormOfType(type);
    return number >= form.least && number <= form.greatest;
}

std::int64_t Truncate(double number) {
    if (std::isnan(number)) return 0;
    if (number >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
    if (number < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

// False for a text without a number at its beginning, which counts as 0.
bool ReadTextOperand(std::string_view text, Operand& out) {
    CVal number;
    const bool found = ReadNumberPrefix(text, number);
    const bool real = number.GetType() == ValueType::Double;
    out = {number.GetType(), real ? 0 : number.Integer(), real ? number.Real() : 0};
    return found;
}

inline bool ReadOperand(const CVal& value, Operand& out) {
    const std::uint16_t type = value.GetType();
    if (type == ValueType::Text) return ReadTextOperand(value.Text(), out);
    if (type == ValueType::Double) {
        out = {type, 0, value.Real()};
    } else if (ValueType::IsInteger(type)) {
        out = {type, value.Integer(), 0};
    } else {
        out = {ValueType::Int, 0, 0};
    }
    return true;
}

std::int64_t ReadAs(int type, const Operand& operand) {
    const std::int64_t number = operand.IsReal() ? Truncate(operand.real) : operand.integer;
    const IntegerForm& form = FormOfType(type);
    return std::clamp(number, form.least, form.greatest);
}

struct Add {
    WideInteger operator()(WideInteger a, WideInteger b) const { return a + b; }
    double operator()(double a, double b) const { return a + b; }
};

struct Subtract {
    WideInteger operator()(WideInteger a, WideInteger b) const { return a - b; }
    double operator()(double a, double b) const { return a - b; }
};

struct Multiply {
    WideInteger operator()(WideInteger a, WideInteger b) const { return a * b; }
    double operator()(double a, double b) const { return a * b; }
};

std::partial_ordering CompareMixed(std::int64_t integer, double real) {
    if (std::isnan(real)) return std::partial_ordering::unordered;
    if (real >= kTwoTo63) return std::partial_ordering::less;
    if (real < -kTwoTo63) return std::partial_ordering::greater;
    const auto whole = static_cast<std::int64_t>(real);
    if (integer != whole) return integer <=> whole;
    return 0.0 <=> real - static_cast<double>(whole);
}

std::partial_ordering CompareNumbers(const Operand& left, const Operand& right) {
    if (left.IsReal() && right.IsReal()) return left.real <=> right.real;
    if (left.IsReal()) return 0 <=> CompareMixed(right.integer, left.real);
    if (right.IsReal()) return CompareMixed(left.integer, right.real);
    return left.integer <=> right.integer;
}

bool IsNaN(const CVal& value) {
    return value.GetType() == ValueType::Double && std::isnan(value.Real());
}

std::partial_ordering Compare(const CVal& left, const CVal& right) {
    Operand a;
    Operand b;
    if (left.IsText() && right.IsText()) return left.Text() <=> right.Text();
    if (left.IsText() || right.IsText()) {
        CVal number;
        if (IsNaN(left) || IsNaN(right)) return std::partial_ordering::unordered;
        if (!ReadWholeNumber(left.IsText() ? left.Text() : right.Text(), number)) {
            return ValueToText(left) <=> ValueToText(right);
        }
        ReadOperand(left.IsText() ? number : left, a);
        ReadOperand(right.IsText() ? number : right, b);
    } else {
        ReadOperand(left, a);
        ReadOperand(right, b);
    }
    return CompareNumbers(a, b);
}

}  // namespace

CVal::CVal(std::wstring_view text) : CVal(text::FromWide(text)) {}

void CVal::AssignText(const CVal& other) {
    if (!other.IsText()) {
        PutNumber(other.m_head.type, other.m_number);
    } else if (IsText()) {
        m_text = other.m_text;
    } else {
        std::string copy = other.m_text;  // a number stays whole where there is no memory for it
        new (&m_text) std::string(std::move(copy));
    }
}

void CVal::TakeText(CVal& other) noexcept {
    if (!other.IsText()) {
        PutNumber(other.m_head.type, other.m_number);
    } else {
        PutText(std::move(other.m_text));
    }
}

void CVal::PutNumber(std::uint16_t type, Number number) noexcept {
    if (IsText()) m_text.~basic_string();
    m_number = number;
    if (m_head.type != type) m_head.type = type;
}

void CVal::PutText(std::string&& text) noexcept {
    if (IsText()) {
        m_text = std::move(text);
    } else {
        new (&m_text) std::string(std::move(text));
    }
    m_head.type = ValueType::Text;
}

void CVal::SetType(std::uint16_t code) {
    if (code == m_head.type) return;
    if (code == ValueType::None || !Cast(code)) PutNumber(code, Number{0});
}

bool CVal::GetAny(int type, void* destination) const {
    const bool integer = ValueType::IsInteger(type);
    if (!integer && type != ValueType::Double) return false;
    Operand operand;
    const bool read = ReadOperand(*this, operand);
    if (integer) {
        FormOfType(type).store(ReadAs(type, operand), destination);
    } else {
        const double real = operand.AsReal();
        std::memcpy(destination, &real, sizeof real);
    }
    return read;
}

bool CVal::GetValData(int type, std::string& destination, int, const char*) const {
    if (type != ValueType::Text) return false;
    destination = ValueToText(*this);
    return true;
}

bool CVal::CastAny(int type) {
    if (type == ValueType::Text) {
        PutText(ValueToText(*this));
        return true;
    }
    const bool integer = ValueType::IsInteger(type);
    if (!integer && type != ValueType::Double) return false;
    Operand operand;
    if (!ReadOperand(*this, operand)) return false;
    const Number number =
        integer ? Number{ReadAs(type, operand)} : Number{.real = operand.AsReal()};
    PutNumber(static_cast<std::uint16_t>(type), number);
    return true;
}

template <class Operation>
void CVal::Compute(const CVal& right, Operation operation) {
    if (IsReal() && right.IsInteger()) {
        PutReal(operation(Real(), static_cast<double>(right.Integer())), right);
        return;
    }
    Operand a;
    Operand b;
    ReadOperand(*this, a);
    ReadOperand(right, b);
    if (a.IsReal() || b.IsReal()) {
        PutNumber(ValueType::Double, Number{.real = operation(a.AsReal(), b.AsReal())});
    } else {
        const WideInteger exact = operation(WideInteger{a.integer}, WideInteger{b.integer});
        const auto number = static_cast<std::int64_t>(exact);
        const std::uint16_t wider = std::max(a.type, b.type);
        if (number != exact) {
            PutNumber(ValueType::Double, Number{.real = static_cast<double>(exact)});
        } else {
            PutNumber(Fits(number, wider) ? wider : ValueType::Int64, Number{number});
        }
    }
    JoinStamp(right);
}

CVal& CVal::AddAny(const CVal& right) {
    if (IsText() && right.IsText()) {
        CheckTextSize(m_text.size() + right.m_text.size());
        m_text += right.m_text;
        JoinStamp(right);
    } else {
        Compute(right, Add());
    }
    return *this;
}

CVal& CVal::SubtractAny(const CVal& right) {
    Compute(right, Subtract());
    return *this;
}

CVal& CVal::MultiplyAny(const CVal& right) {
    Compute(right, Multiply());
    return *this;
}

CVal& CVal::DivideAny(const CVal& right) {
    Operand a;
    Operand b;
    ReadOperand(*this, a);
    ReadOperand(right, b);
    PutNumber(ValueType::Double, Number{.real = a.AsReal() / b.AsReal()});
    JoinStamp(right);
    return *this;
}

CVal CVal::operator*(const CVal& right) const {
    CVal result(*this);
    result *= right;
    return result;
}

CVal CVal::operator~() const {
    Operand operand;
    ReadOperand(*this, operand);
    const std::uint16_t type = operand.IsReal() ? ValueType::Int : operand.type;
    const std::int64_t complement = ~ReadAs(ValueType::Int64, operand);
    CVal result;
    result.PutNumber(Fits(complement, type) ? type : ValueType::Int64, CVal::Number{complement});
    return result;
}

CVal pow(const CVal& base, const CVal& exponent) {
    Operand a;
    Operand b;
    ReadOperand(base, a);
    ReadOperand(exponent, b);
    CVal result(base);
    result.PutNumber(ValueType::Double, CVal::Number{.real = std::pow(a.AsReal(), b.AsReal())});
    result.JoinStamp(exponent);
    return result;
}

double CVal::Order(const CVal& right) const {
    const std::partial_ordering order =
        IsInteger() && right.IsReal()   ? CompareMixed(Integer(), right.Real())
        : IsReal() && right.IsInteger() ? 0 <=> CompareMixed(right.Integer(), Real())
                                        : Compare(*this, right);
    if (order == std::partial_ordering::unordered) return std::numeric_limits<double>::quiet_NaN();
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool CVal::AppendText(std::string_view tail) {
    if (!IsText()) return false;
    CheckTextSize(m_text.size() + tail.size());
    m_text.append(tail);
    m_head.status = 0;
    SetTime(0);
    return true;
}

}  // namespace kalvex::value
