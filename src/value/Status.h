// Status bits and value kinds with the words that name them in scripts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kalvex::value {

namespace Status {
inline constexpr std::uint16_t Unknown = 0x0001;
inline constexpr std::uint16_t TransmissionError = 0x0002;
inline constexpr std::uint16_t Alarm = 0x0004;
inline constexpr std::uint16_t ConfirmedAlarm = 0x0008;
inline constexpr std::uint16_t SetByDevice = 0x0010;
inline constexpr std::uint16_t SetByUser = 0x0020;
inline constexpr std::uint16_t CalculateError = 0x0040;
inline constexpr std::uint16_t ReportLoaded = 0x0080;
inline constexpr std::uint16_t ReportInited = 0x0100;
inline constexpr std::uint16_t HardLock = 0x0200;
inline constexpr std::uint16_t SoftLock = 0x0800;
inline constexpr std::uint16_t AlarmMem = 0x4000;
inline constexpr std::uint16_t Supervisory = 0x8000;
}  // namespace Status

struct StatusWord {
    std::string_view word;
    std::uint16_t bit;
};

// All words, LOCK and HARDLOCK among them; compared with case.
std::span<const StatusWord> StatusWords();
std::optional<std::uint16_t> StatusBit(std::string_view word);

// Which data of a variable is meant.
enum ValueKind : int {
    KindNone = 0,
    KindCurrent = 1,
    KindHour = 2,
    KindDay = 3,
    KindMonth = 4,
    KindSpan = 5,
    KindArchive = 6,
};

inline constexpr std::array kReportKinds = {KindHour, KindDay, KindMonth, KindSpan};

constexpr bool IsReport(ValueKind kind) {
    return kind >= KindHour && kind <= KindSpan;
}

// The place of a report kind among the four.
constexpr std::size_t ReportIndex(ValueKind kind) {
    return static_cast<std::size_t>(kind - KindHour);
}

// What a server keeps by its times: reports and the archive.
constexpr bool IsStored(ValueKind kind) {
    return IsReport(kind) || kind == KindArchive;
}

struct ValueKindRow {
    std::string_view suffix;  // without its dot
    ValueKind kind;
    std::string_view help;  // Polish, UTF-8
};

std::span<const ValueKindRow> ValueKinds();

// The suffix word of a kind; empty for KindNone.
std::string_view WordOfKind(ValueKind kind);

// The kind for a suffix word compared exactly (HREP); KindNone for any other word.
ValueKind KindFromWord(std::string_view word);

// The kind that the suffix of a name selects, upper or lower case; KindCurrent without a dot at
// position 1 or later.
ValueKind GetValueKind(std::string_view name);

}  // namespace kalvex::value
