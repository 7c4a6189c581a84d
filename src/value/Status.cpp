#include "value/Status.h"

#include "text/CodePage.h"

namespace kalvex::value {

namespace {

constexpr StatusWord kStatusWords[] = {
    {"UNKNOWN", Status::Unknown},
    {"TRANSMISSION_ERROR", Status::TransmissionError},
    {"ALARM", Status::Alarm},
    {"CONFIRMED_ALARM", Status::ConfirmedAlarm},
    {"SET_BY_DEVICE", Status::SetByDevice},
    {"SET_BY_USER", Status::SetByUser},
    {"CALCULATE_ERROR", Status::CalculateError},
    {"REPORT_LOADED", Status::ReportLoaded},
    {"REPORT_INITED", Status::ReportInited},
    {"LOCK", Status::HardLock},
    {"HARDLOCK", Status::HardLock},
    {"SOFTLOCK", Status::SoftLock},
    {"ALARM_MEM", Status::AlarmMem},
    {"SUPERVISORY", Status::Supervisory},
};

constexpr ValueKindRow kValueKinds[] = {
    {"CURDATA", KindCurrent, "Typ danych: bieżące"},
    {"HREP", KindHour, "Typ danych: godzinowe"},
    {"DREP", KindDay, "Typ danych: dobowe"},
    {"MREP", KindMonth, "Typ danych: miesięczne"},
    {"SREP", KindSpan, "Typ danych: okresowe"},
    {"ARCH", KindArchive, "Typ danych: archiwalne"},
};

}  // namespace

std::span<const StatusWord> StatusWords() {
    return kStatusWords;
}

std::optional<std::uint16_t> StatusBit(std::string_view word) {
    for (const StatusWord& row : kStatusWords) {
        if (row.word == word) return row.bit;
    }
    return std::nullopt;
}

std::span<const ValueKindRow> ValueKinds() {
    return kValueKinds;
}

std::string_view WordOfKind(ValueKind kind) {
    for (const ValueKindRow& row : kValueKinds) {
        if (row.kind == kind) return row.suffix;
    }
    return {};
}

ValueKind KindFromWord(std::string_view word) {
    for (const ValueKindRow& row : kValueKinds) {
        if (row.suffix == word) return row.kind;
    }
    return KindNone;
}

ValueKind GetValueKind(std::string_view name) {
    const std::size_t dot = name.find('.', 1);
    if (dot == std::string_view::npos) return KindCurrent;
    const std::string_view suffix = name.substr(dot + 1);
    for (const ValueKindRow& row : kValueKinds) {
        if (text::EqualNoCase(row.suffix, suffix)) return row.kind;
    }
    return KindNone;
}

}  // namespace kalvex::value
