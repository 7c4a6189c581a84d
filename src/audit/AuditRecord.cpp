#include "audit/AuditRecord.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <nlohmann/json.hpp>

#include "text/CodePage.h"
#include "text/ControlText.h"
#include "value/LocalTime.h"

namespace kalvex::audit {

namespace {

using Json = nlohmann::ordered_json;

struct ActionRow {
    AuditAction action;
    std::string_view word;
    bool allScripts = false;
};

constexpr ActionRow kActions[] = {
    {AuditAction::Start, "start"},
    {AuditAction::Stop, "stop"},
    {AuditAction::Reset, "reset"},
    {AuditAction::Step, "step"},
    {AuditAction::Value, "value"},
    {AuditAction::BreakpointSet, "breakpoint-set"},
    {AuditAction::BreakpointRemoved, "breakpoint-removed"},
    {AuditAction::BreakpointsRemoved, "breakpoints-removed"},
    {AuditAction::SessionTaken, "session-taken"},
    {AuditAction::SessionGiven, "session-given"},
    {AuditAction::SessionForced, "session-forced"},
    {AuditAction::SessionsTakenBack, "sessions-taken-back", true},
    {AuditAction::Open, "open"},
    {AuditAction::Close, "close"},
    {AuditAction::Level, "level"},
    {AuditAction::Lost, "lost", true},
};

struct TextRow {
    const char* key;
    std::string AuditRecord::*field;
};

constexpr TextRow kTexts[] = {
    {"script", &AuditRecord::script},   {"user", &AuditRecord::user},
    {"address", &AuditRecord::address}, {"client", &AuditRecord::client},
    {"name", &AuditRecord::name},
};

struct ValueRow {
    const char* key;
    std::optional<std::string> AuditRecord::*field;
};

constexpr ValueRow kValues[] = {
    {"old", &AuditRecord::oldValue},
    {"new", &AuditRecord::newValue},
};

constexpr const char* kTime = "time";
constexpr const char* kSeconds = "seconds";
constexpr const char* kAction = "action";
constexpr const char* kAddress = "address";
constexpr const char* kLocal = "local";
constexpr std::string_view kCut = "...";

const ActionRow& RowOf(AuditAction action) {
    return *std::ranges::find(kActions, action, &ActionRow::action);
}

// "2024-03-10T07:00:00+01:00"
std::string IsoTime(std::int64_t time) {
    std::tm local{};
    if (!value::LocalCalendar(time, local)) return std::to_string(time);
    const long minutes = std::labs(local.tm_gmtoff) / value::kSecondsPerMinute;
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}{}{:02}:{:02}", local.tm_year + 1900,
                       local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                       local.tm_gmtoff < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

std::string Shown(std::string_view text) {
    if (text.size() <= kLongestAuditText) return text::ToUtf8(text);
    return text::ToUtf8(text.substr(0, kLongestAuditText)).append(kCut);
}

// False when the member is there and is neither a text nor null.
bool TakeText(const Json& object, const char* key, std::optional<std::string>& text) {
    const auto member = object.find(key);
    if (member == object.end() || member->is_null()) return true;
    if (!member->is_string()) return false;
    text = text::FromUtf8(member->get_ref<const std::string&>());
    return true;
}

bool TakeTexts(const Json& object, AuditRecord& record) {
    for (const TextRow& row : kTexts) {
        std::optional<std::string> text;
        if (!TakeText(object, row.key, text)) return false;
        if (text) record.*row.field = *text;
    }
    if (record.address == kLocal) record.address.clear();
    return std::ranges::all_of(
        kValues, [&](const ValueRow& row) { return TakeText(object, row.key, record.*row.field); });
}

}  // namespace

std::string_view AuditWord(AuditAction action) {
    return RowOf(action).word;
}

std::optional<AuditAction> AuditActionOf(std::string_view word) {
    const auto row = std::ranges::find(kActions, word, &ActionRow::word);
    if (row == std::end(kActions)) return {};
    return row->action;
}

std::string AuditAddress(const AuditRecord& record) {
    return record.address.empty() && !record.user.empty() ? kLocal : record.address;
}

bool ConcernsAllScripts(AuditAction action) {
    return RowOf(action).allScripts;
}

std::string AuditLine(const AuditEntry& entry) {
    Json line = {{kTime, IsoTime(entry.time)},
                 {kSeconds, entry.time},
                 {kAction, AuditWord(entry.record.action)}};
    for (const TextRow& row : kTexts) {
        const std::string& text = entry.record.*row.field;
        line[row.key] = text.empty() ? Json() : Json(Shown(text));
    }
    if (const std::string address = AuditAddress(entry.record); !address.empty()) {
        line[kAddress] = Shown(address);
    }
    for (const ValueRow& row : kValues) {
        const std::optional<std::string>& text = entry.record.*row.field;
        line[row.key] = text ? Json(Shown(*text)) : Json();
    }
    // The library leaves 0x7f and C1 as they are, which a terminal that shows the file obeys.
    return text::EscapeUtf8Controls(line.dump(), ' ', "\\u00") + '\n';
}

std::optional<AuditEntry> ParseAuditLine(std::string_view line) {
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object()) return {};
    const auto seconds = object.find(kSeconds);
    const auto action = object.find(kAction);
    if (seconds == object.end() || !seconds->is_number_integer() || action == object.end() ||
        !action->is_string()) {
        return {};
    }
    const auto known = AuditActionOf(action->get_ref<const std::string&>());
    AuditEntry entry{.time = seconds->get<std::int64_t>()};
    if (!known || !TakeTexts(object, entry.record)) return {};
    entry.record.action = *known;
    return entry;
}

std::optional<std::int64_t> AuditLineTime(std::string_view line) {
    constexpr std::string_view kMark = "\"seconds\":";
    constexpr std::size_t kFarthest = 64;
    const std::size_t found = line.substr(0, kFarthest).find(kMark);
    if (found == line.npos) return {};
    line.remove_prefix(found + kMark.size());
    std::int64_t seconds = 0;
    const auto [rest, fault] = std::from_chars(line.data(), line.data() + line.size(), seconds);
    if (fault != std::errc() || rest == line.data() + line.size() || *rest != ',') return {};
    return seconds;
}

}  // namespace kalvex::audit
