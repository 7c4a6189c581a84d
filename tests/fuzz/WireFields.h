// Bytes as the fields of which a parcel is made, at one level: a tag, then a number or a content of
// a length that stands before it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::fuzz {

struct WireField {
    std::uint64_t tag = 0;
    std::string content;  // without its length; of a number its bytes

    // Whether the content has a length, and may hold fields in turn.
    bool IsText() const { return (tag & 7) == 2; }
    bool IsNumber() const { return (tag & 7) == 0; }
};

std::string WireNumber(std::uint64_t number);

// False when the bytes are no fields from their beginning to their end.
bool SplitFields(std::string_view bytes, std::vector<WireField>& fields);
std::string JoinFields(const std::vector<WireField>& fields);

}  // namespace kalvex::fuzz
