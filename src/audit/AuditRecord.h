// What somebody changed in a module, and its line in the file of the audit trail: one JSON object.
// Texts of records are engine texts, those of lines UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::audit {

enum class AuditAction {
    Start,
    Stop,
    Reset,
    Step,
    Value,
    BreakpointSet,
    BreakpointRemoved,
    BreakpointsRemoved,
    SessionTaken,
    SessionGiven,
    SessionForced,
    SessionsTakenBack,
    Open,
    Close,
    Level,
    Lost,  // `newValue` records that could not be written
};

// An empty text, or none, where the action has no such thing.
struct AuditRecord {
    AuditAction action = AuditAction::Lost;
    std::string script = {};  // its path, as the module lists it
    std::string user = {};
    std::string address = {};  // empty: this machine, for a user
    std::string client = {};   // its identity
    std::string name = {};     // of a variable; of a line its number
    std::optional<std::string> oldValue = {};
    std::optional<std::string> newValue = {};

    bool operator==(const AuditRecord&) const = default;
};

struct AuditEntry {
    std::int64_t time = 0;  // seconds since 1970 GMT
    AuditRecord record = {};

    bool operator==(const AuditEntry&) const = default;
};

// Of a text in a line, in bytes of the engine text; a longer one is cut and ends in "...".
inline constexpr std::size_t kLongestAuditText = 16384;
// Of a line, in bytes: none is longer, whatever the texts are.
inline constexpr std::size_t kLongestAuditLine = std::size_t{1} << 20;

// The word by which lines and programs know the action.
std::string_view AuditWord(AuditAction action);

// Nothing for a word that is none.
std::optional<AuditAction> AuditActionOf(std::string_view word);

// Of whoever did it, "local" for a user on this machine; empty without a user.
std::string AuditAddress(const AuditRecord& record);

// Whether the action concerns every script where no script is named.
bool ConcernsAllScripts(AuditAction action);

// With its end.
std::string AuditLine(const AuditEntry& entry);

// Nothing when the line, without its end, is none of a trail.
std::optional<AuditEntry> ParseAuditLine(std::string_view line);

// The time of a line without a look at the rest of it.
std::optional<std::int64_t> AuditLineTime(std::string_view line);

}  // namespace kalvex::audit
