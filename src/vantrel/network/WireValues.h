// Values and texts between the engine and the generated classes of sorvane.proto. Any thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "sorvane.pb.h"
#include "vantrel/network/Parcel.h"

namespace kalvex::vantrel::wire {

namespace pb = ::sorvane::v1;

// From this size on a message goes into another parcel. One more entry still fits below the bound.
inline constexpr std::size_t kParcelGoal = 256 << 10;

// ---- out

// False, the text being empty then, when it is beyond the bound.
bool PutText(std::string_view text, std::size_t bound, std::string& out);
bool Fits(const value::CVal& value);
// Of values that fit.
void PutValue(const value::CVal& value, pb::Value& out);
void AddValue(const value::CVal& value, pb::Values& out);
// Makes a single element of each column that has the same element throughout.
void Squeeze(pb::Values& values);
std::size_t SizeOf(
    const value::CVal& value);  // in a column, at most, as far as bytes of texts tell

// ---- in

class Reader;

// False when the bytes are no such message. The library logs nothing about it.
bool ParseBytes(std::string_view bytes, google::protobuf::MessageLite& message);
// The same, with the fault noted; also when the bytes are too many.
bool Parse(std::string_view bytes, google::protobuf::MessageLite& message, Reader& reader);

// Each reading notes the first thing that is wrong and goes on.
class Reader {
  public:
    WireFault Fault() const { return m_fault; }
    void Note(WireFault fault) {
        if (m_fault == WireFault::None) m_fault = fault;
    }

    std::string Name(const std::string& utf8) {
        return Text(utf8, kMaxNameBytes, WireFault::NameTooLong);
    }
    std::string Text(const std::string& utf8) {
        return Text(utf8, kMaxTextBytes, WireFault::TextTooLong);
    }

    template <class Number>
    Number Narrow(std::uint32_t number) {
        if (number > std::numeric_limits<Number>::max()) Note(WireFault::NumberOutOfRange);
        return static_cast<Number>(number);
    }

    value::ValueKind Kind(int number);
    value::CVal Value(const pb::Value& value);
    // As many as told; an empty vector when something is wrong.
    std::vector<value::CVal> Values(const pb::Values& values);
    // True when all the sizes are equal and within the bound of lists.
    bool Columns(std::initializer_list<int> sizes);

  private:
    std::string Text(const std::string& utf8, std::size_t bound, WireFault fault);

    WireFault m_fault = WireFault::None;
};

Farewell ReadFarewell(const pb::Farewell& in, Reader& reader);

}  // namespace kalvex::vantrel::wire
