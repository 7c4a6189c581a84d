// The dot properties of a time: TIME.HOUR, STAMP.FIRSTLOCALDAY. One table, from which help and
// completion are made too. The rules for zone and for times without fields are LocalTime.h's.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace kalvex::operands {

enum class TimePropertyKind {
    Time,  // a 64-bit value
    Int,
};

struct TimeProperty {
    std::string_view name;  // with its leading dot
    TimePropertyKind kind;
    std::int64_t (*compute)(std::int64_t time);  // an Int result always fits an int
    std::string_view help;                       // Polish, UTF-8; empty when the help list has none
};

// All properties, in the order of the help list. Names are unique.
std::span<const TimeProperty> TimeProperties();

// The property that `rest`, dots included, names exactly and with case; null when there is none.
const TimeProperty* FindTimeProperty(std::string_view rest);

// True when the text of an operand reads as a time expression by its property: some property's name
// occurs in it, and its first occurrence is at position 1 or later.
bool MentionsTimeProperty(std::string_view text);

}  // namespace kalvex::operands
