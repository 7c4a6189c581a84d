// How a report comes out of an archive or of the reports of shorter periods. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "server/ReportPeriods.h"
#include "value/Value.h"

namespace kalvex::server {

enum class ReportRule : std::uint8_t {
    Mean,      // of the values, weighted by the time for which each stood
    Sum,       // of amounts that are stamped within the period
    Increase,  // of a counter's readings, which begins anew at 0 when it falls
};

// Nothing for any other word than "mean", "sum" and "increase".
std::optional<ReportRule> ReportRuleFromWord(std::string_view word);

// A value that computing can use: known, and a number or a text that is one.
bool IsKnownNumber(const value::CVal& value, double& number);

// The value before the span that the rule wants: for a mean the last one at or before its begin,
// for an increase the last known reading before it, for a sum none.
//
// `inside` are the archive values of the span, ascending. The result is a double, or has no content
// and UNKNOWN when nothing is known; it bears REPORT_LOADED, the other bits of what went in, and
// CALCULATE_ERROR when a part of the span has nothing known.
value::CVal ComputeFromArchive(ReportRule rule, const TimeSpan& span,
                               const std::optional<value::CVal>& before,
                               const std::vector<value::CVal>& inside);

struct ReportPart {
    std::int64_t length = 0;           // of its period, in seconds
    std::optional<value::CVal> value;  // nothing when there is no such report
};

// The same from the reports of the parts of a period: a mean weighted by their lengths, or the sum.
value::CVal ComputeFromReports(ReportRule rule, const std::vector<ReportPart>& parts);

}  // namespace kalvex::server
