// The names of a connection's operations, as the journal has them.
#pragma once

#include <string>
#include <string_view>

#include "vantrel/Messages.h"

namespace kalvex::vantrel {

// "AddHourReportModifyRequest" of "Add", hour report, "Modify".
std::string OperationName(std::string_view verb, value::ValueKind kind,
                          std::string_view action = {});
// "MakeHourReportInitRequest".
std::string OperationName(PeriodAction action, value::ValueKind kind);

}  // namespace kalvex::vantrel
