#include "vantrel/OperationName.h"

#include <cstddef>

namespace kalvex::vantrel {

namespace {

// The words for a kind in the names of the operations.
struct KindRow {
    value::ValueKind kind;
    std::string_view words;
};

constexpr KindRow kKinds[] = {
    {value::KindHour, "HourReport"},     {value::KindDay, "DayReport"},
    {value::KindMonth, "MonthReport"},   {value::KindSpan, "SpanReport"},
    {value::KindArchive, "ArchiveData"},
};

constexpr std::string_view kActions[] = {"Init", "Load", "Calc", "Update", "Refresh"};

}  // namespace

std::string OperationName(std::string_view verb, value::ValueKind kind, std::string_view action) {
    std::string name(verb);
    for (const KindRow& row : kKinds) {
        if (row.kind == kind) name += row.words;
    }
    name += action;
    name += "Request";
    return name;
}

std::string OperationName(PeriodAction action, value::ValueKind kind) {
    return OperationName("Make", kind, kActions[static_cast<std::size_t>(action)]);
}

}  // namespace kalvex::vantrel
