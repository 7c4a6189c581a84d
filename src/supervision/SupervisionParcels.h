// The questions and answers of kalvex.proto as bytes and back. Records bear engine texts; a text
// that is too long is cut and ends in "...". Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/Supervision.h"
#include "audit/AuditRecord.h"
#include "platform/Secret.h"

namespace kalvex::supervision {

enum class Method { GetStatus, WatchStatus, GetBreakpoints, GetStanding, GetAudit };

// On the wire, in the order of Method.
inline constexpr std::array<std::string_view, 5> kMethodNames{
    "/kalvex.v1.Supervision/GetStatus",      "/kalvex.v1.Supervision/WatchStatus",
    "/kalvex.v1.Supervision/GetBreakpoints", "/kalvex.v1.Supervision/GetStanding",
    "/kalvex.v1.Supervision/GetAudit",
};

// Of texts in answers, but for paths and names; in bytes of the engine text.
inline constexpr std::size_t kLongestText = audit::kLongestAuditText;

struct Question {
    std::string user = {};
    platform::Secret password = {};
    std::string clientName = {};
    std::string script = {};
    std::int64_t since = 0;
};

// A piece of a status, or a change of it.
struct StatusPiece {
    app::ModuleStatus status = {};  // with some of the scripts
    std::vector<std::string> closed = {};
    bool complete = false;
};

struct AuditPiece {
    std::vector<audit::AuditEntry> entries = {};
    std::uint64_t unreadable = 0;
    std::vector<std::string> faults = {};  // UTF-8
};

std::string Pack(const Question& question);
// In as many parcels as it takes, at least one; the last bears `closed` and `complete`.
std::vector<std::string> Pack(const StatusPiece& piece);
std::string Pack(const std::vector<int>& breakpoints);
std::string Pack(const engine::ScriptStanding& standing);
std::string Pack(const AuditPiece& piece);

// False when the bytes are none. Values of enumerations that this side does not know are taken for
// those that say least.
bool Unpack(std::string_view bytes, Question& question);
bool Unpack(std::string_view bytes, StatusPiece& piece);
bool Unpack(std::string_view bytes, std::vector<int>& breakpoints);
bool Unpack(std::string_view bytes, engine::ScriptStanding& standing);
bool Unpack(std::string_view bytes, AuditPiece& piece);

}  // namespace kalvex::supervision
