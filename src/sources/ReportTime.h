// The parameters of report statements: tokens with their signs, dates with their offsets.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/ScriptDocument.h"

namespace kalvex::sources {

// The parameters behind the data type, in order; empty where there is none.
class ReportTokens {
  public:
    static constexpr int kCount = 6;

    // Takes the tokens off `rest`. At a place whose bit is set in `signs` (the first has bit 0) a
    // lone "-" takes the next token onto its end.
    ReportTokens(std::string_view& rest, unsigned signs);

    const std::string& operator[](int index) const {
        return m_tokens[static_cast<std::size_t>(index)];
    }

  private:
    std::array<std::string, kCount> m_tokens;
};

// Number of date parts that name a period of the kind.
int CountDateParts(value::ValueKind kind);

// An operand read as an integer.
bool ReadInteger(engine::CKalvexDoc& document, std::string_view token, std::int32_t& number);

// The functions below record an error of their own and answer false when there is no time.

// Year, month, day, hour, as many as the kind has; a span's time is the first of the year.
bool BuildDate(engine::CKalvexDoc& document, const ReportTokens& tokens, value::ValueKind kind,
               std::int64_t& time);
// A time as it stands.
bool ReadTime(engine::CKalvexDoc& document, std::string_view token, std::int64_t& time);
// Moves the start of a year, or any time, on to the span of that number.
bool ChooseSpan(engine::CKalvexDoc& document, std::string_view number, std::int64_t& time);

// Moves the time by as many hours, days or months as the token says; one that says nothing moves
// nothing.
void ShiftByToken(engine::CKalvexDoc& document, std::string_view token, value::ValueKind kind,
                  std::int64_t& time);

// Records that parameters are missing or make no sense, for a handler to return.
operands::Failure FailParameters(engine::CKalvexDoc& document);

}  // namespace kalvex::sources
