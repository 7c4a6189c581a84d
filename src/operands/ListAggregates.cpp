#include "operands/ListAggregates.h"

#include <algorithm>

namespace kalvex::operands {

namespace {

// Combines the elements that count, the first of them taken whole.
template <class Combine>
bool Fold(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
          Combine combine) {
    bool found = false;
    for (const value::CVal& element : list.Elements()) {
        if (!filter.Counts(element)) continue;
        if (found) {
            combine(result, element);
        } else {
            result = element;
            found = true;
        }
    }
    return found;
}

void MarkCalculated(value::CVal& result, std::int64_t now) {
    result.SetTime(now);
    result.SetStatus(value::Status::SetByUser);
}

}  // namespace

int CountItems(const CVariableList& list, const ElementFilter& filter) {
    const ElementSequence& elements = list.Elements();
    if (filter.ignoreMask == 0 && filter.from == 0 && filter.to == value::kLargestTime) {
        return static_cast<int>(elements.size());
    }
    return static_cast<int>(std::ranges::count_if(
        elements, [&filter](const value::CVal& element) { return filter.Counts(element); }));
}

bool SumItems(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
              std::int64_t now) {
    if (!Fold(list, result, filter,
              [](value::CVal& sum, const value::CVal& element) { sum += element; })) {
        return false;
    }
    MarkCalculated(result, now);
    return true;
}

bool AverageItems(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
                  std::int64_t now) {
    const int count = CountItems(list, filter);
    if (!SumItems(list, result, filter, now)) return false;
    result /= value::CVal(count);
    MarkCalculated(result, now);
    return true;
}

bool MaxItem(const CVariableList& list, value::CVal& result, const ElementFilter& filter) {
    return Fold(list, result, filter, [](value::CVal& highest, const value::CVal& element) {
        if (highest < element) highest = element;
    });
}

bool MinItem(const CVariableList& list, value::CVal& result, const ElementFilter& filter) {
    return Fold(list, result, filter, [](value::CVal& lowest, const value::CVal& element) {
        if (lowest > element) lowest = element;
    });
}

}  // namespace kalvex::operands
