// What is computed over the elements of a list. An element counts when no bit of the mask is set in
// its status and its time lies in the range, bounds included.
#pragma once

#include <cstdint>

#include "operands/Variable.h"
#include "value/LocalTime.h"

namespace kalvex::operands {

struct ElementFilter {
    std::uint16_t ignoreMask = 0;
    std::int64_t from = 0;
    std::int64_t to = value::kLargestTime;

    bool Counts(const value::CVal& element) const {
        return (element.GetStatus() & ignoreMask) == 0 && element.GetTime() >= from &&
               element.GetTime() <= to;
    }
};

int CountItems(const CVariableList& list, const ElementFilter& filter);

// False, with `result` as it was, when no element counts. Sum and average get the time `now` and
// the status SetByUser; minimum and maximum are the element itself, the earlier one on ties.
bool SumItems(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
              std::int64_t now);
bool AverageItems(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
                  std::int64_t now);
bool MaxItem(const CVariableList& list, value::CVal& result, const ElementFilter& filter);
bool MinItem(const CVariableList& list, value::CVal& result, const ElementFilter& filter);

}  // namespace kalvex::operands
