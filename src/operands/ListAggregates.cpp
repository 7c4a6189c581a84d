#include "operands/ListAggregates.h"

namespace kalvex::operands {

namespace {

template <class Visit>
void ForEachThatCounts(const CVariableList& list, const ElementFilter& filter, Visit visit) {
    for (const ElementSequence::Row* row : list.Elements().Rows()) {
        for (const value::CVal& element : *row) {
            if (filter.Counts(element)) visit(element);
        }
    }
}

// Adds up in order and answers how many. What a row of doubles comes to is held apart from a value,
// so status and time of the result say nothing.
int AddUp(const CVariableList& list, value::CVal& result, const ElementFilter& filter) {
    int count = 0;
    bool reals = false;
    double sum = 0;
    ForEachThatCounts(list, filter, [&](const value::CVal& element) {
        ++count;
        if (reals && element.IsReal()) {
            sum += element.Real();
            return;
        }
        if (reals) result = value::CVal(sum);
        if (count == 1) {
            result = element;
        } else {
            result += element;
        }
        reals = result.IsReal();
        if (reals) sum = result.Real();
    });
    if (reals) result = value::CVal(sum);
    return count;
}

// The first of those that no other is before.
template <class Before>
bool FindFirst(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
               Before before) {
    const value::CVal* first = nullptr;
    ForEachThatCounts(list, filter, [&](const value::CVal& element) {
        if (first == nullptr || before(element, *first)) first = &element;
    });
    if (first == nullptr) return false;
    result = *first;
    return true;
}

// A filter as it is made leaves no element out of the count, be its time before 1970.
bool CountsAll(const ElementFilter& filter) {
    return filter.ignoreMask == 0 && filter.from == 0 && filter.to == value::kLargestTime;
}

void MarkCalculated(value::CVal& result, std::int64_t now) {
    result.SetTime(now);
    result.SetStatus(value::Status::SetByUser);
}

}  // namespace

int CountItems(const CVariableList& list, const ElementFilter& filter) {
    if (CountsAll(filter)) return static_cast<int>(list.Elements().size());
    int count = 0;
    ForEachThatCounts(list, filter, [&count](const value::CVal&) { ++count; });
    return count;
}

bool SumItems(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
              std::int64_t now) {
    if (AddUp(list, result, filter) == 0) return false;
    MarkCalculated(result, now);
    return true;
}

bool AverageItems(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
                  std::int64_t now) {
    const int added = AddUp(list, result, filter);
    if (added == 0) return false;
    result /= value::CVal(CountsAll(filter) ? CountItems(list, filter) : added);
    MarkCalculated(result, now);
    return true;
}

bool MaxItem(const CVariableList& list, value::CVal& result, const ElementFilter& filter) {
    return FindFirst(
        list, result, filter,
        [](const value::CVal& element, const value::CVal& first) { return first < element; });
}

bool MinItem(const CVariableList& list, value::CVal& result, const ElementFilter& filter) {
    return FindFirst(
        list, result, filter,
        [](const value::CVal& element, const value::CVal& first) { return first > element; });
}

}  // namespace kalvex::operands
