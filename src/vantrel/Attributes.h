// The attributes of a variable's definition that mean something to a server and to its clients: the
// keys, and the bits of those that are sets.
#pragma once

#include <string_view>

#include "value/Status.h"

namespace kalvex::vantrel {

namespace Attribute {
inline constexpr std::string_view Description = "de";
inline constexpr std::string_view DescName = "nd";
inline constexpr std::string_view Unit = "un";
inline constexpr std::string_view DispFormat = "fo";
inline constexpr std::string_view Minimum = "min";
inline constexpr std::string_view Maximum = "max";
inline constexpr std::string_view Archive = "at";  // ArchiveBit
inline constexpr std::string_view Reports = "rt";  // ReportBit
inline constexpr std::string_view Path = "pa";     // groups separated by "/"
}  // namespace Attribute

namespace ArchiveBit {
inline constexpr unsigned Changes = 2;
inline constexpr unsigned Samples = 4;
inline constexpr unsigned Clients = 32;
inline constexpr unsigned Any = Changes | Samples | Clients;
}  // namespace ArchiveBit

// The bit of a report kind, 0 for any other kind.
constexpr unsigned ReportBit(value::ValueKind kind) {
    return value::IsReport(kind) ? 1U << (kind - 1) : 0;
}

}  // namespace kalvex::vantrel
