// What a client and a data server say to each other, whatever carries it. Plain data. All texts and
// names are engine texts (Windows-1250), times are seconds since 1970-01-01 00:00:00 GMT.
//
// A conversation begins with the client's LoginRequest and the server's LoginResult; before a
// result of 0 neither side sends anything else. From then on each side sends what it likes, and
// each direction keeps its order. A message that a side does not expect is passed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/Secret.h"
#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::vantrel {

// Stands for the name of a subscribed variable. Given by the client, never 0. Within one
// conversation a number is given once, so that an update under way for an old variable cannot be
// taken for another's.
using VariableHandle = std::uint32_t;

// Ties an answer to its request. Given by the client, never 0.
using RequestId = std::uint32_t;

inline constexpr std::uint16_t kProtocolVersion = 1;

// That a server can have.
inline constexpr std::size_t kMostVariables = 1'000'000;

// ---- client to server
// ----------------------------------------------------------------------------

struct LoginRequest {
    std::uint16_t protocolVersion = kProtocolVersion;
    std::uint16_t moduleType = 0;  // of the server that the client means to talk to
    std::string clientName;
    std::string user;
    platform::Secret password;
    std::string token = {};  // of the client process; empty: its writes have no serials
    std::string pair = {};   // of clients that stand in for one another
    std::uint64_t term = 0;
    // Of the last report change that the client knows of; it is told those behind it, and then each
    // further one.
    std::optional<std::uint64_t> changesSince = {};
};

// Wishes of a client that a server knows; other bits mean nothing to it.
namespace SubscribeFlag {
inline constexpr std::uint32_t ReportChanges = 64;
inline constexpr std::uint32_t LogMessages = 256;
}  // namespace SubscribeFlag

// The server answers for each added variable with an access error or with its definition, if it
// has one, and its present value, which may be of type None, and goes on sending its changes. When
// a variable goes or is taken from the client, it sends an access error for it; when it comes back,
// its definition and its value.
struct SubscribeRequest {
    struct Entry {
        VariableHandle handle = 0;
        std::string name;
    };
    std::vector<Entry> added;
    std::vector<VariableHandle> removed;
    std::uint32_t flags = 0;  // the client's wishes, to be added to those that it has told before
    bool last = true;         // false: another piece of the same subscription follows
};

// A report value (from equals to) or the values of a range, bounds included.
struct ReadRequest {
    RequestId id = 0;
    value::ValueKind kind = value::KindNone;  // hour, day, month, span or archive
    std::string variable;
    std::int64_t from = 0;
    std::int64_t to = 0;
    // Of a range at most so many values, from 8 on, among them the smallest and the largest ones of
    // its pieces; 0: all. A server that does not know of it gives all.
    std::uint32_t points = 0;
};

struct ReadRequests {
    std::vector<ReadRequest> requests;
};

// The requests need not be answered any more.
struct CancelRequests {
    std::vector<RequestId> ids;
};

struct ModifyRequest {
    RequestId id = 0;
    value::ValueKind kind = value::KindNone;  // current, hour, day, month or span
    std::string variable;
    std::int64_t time = 0;  // start of the report period; without meaning for a current value
    value::CVal value;
    std::uint64_t serial = 0;  // of the token; done once, however often it is sent; 0: none
};

struct ModifyRequests {
    std::vector<ModifyRequest> requests;
};

// Taken as a whole or not at all.
struct ArchiveModifyRequest {
    RequestId id = 0;
    std::string variable;
    std::int64_t from = 0;  // times of the first and the last value
    std::int64_t to = 0;
    std::vector<value::CVal> values;  // ascending by time
    std::uint64_t serial = 0;
};

enum class PeriodAction : std::uint8_t {
    Init,       // a report period is to begin
    Load,       // its data are to be fetched from the device
    Calculate,  // its value is to be computed anew
    Update,     // archive data up to the time are to be fetched
    Refresh,    // archive data up to the time are to be fetched again
};

// An order to the server. Answered in ModifyResults when it has an id.
struct PeriodRequest {
    PeriodAction action = PeriodAction::Init;
    value::ValueKind kind = value::KindNone;  // archive for the last two actions
    std::string variable;
    std::int64_t time = 0;
    RequestId id = 0;
    std::uint64_t serial = 0;
};

// Who sends it knows of the alarms of the variable that have been so far.
struct AcknowledgeRequest {
    RequestId id = 0;
    std::string variable;
    std::uint64_t serial = 0;
};

// Answered in ModifyResults, each by its id.
struct AcknowledgeRequests {
    std::vector<AcknowledgeRequest> requests;
};

// The server's newest log lines, to be sent as log messages.
struct LastMessagesRequest {
    std::uint32_t count = 0;
};

// The client is the active one of its pair from now on.
struct TakeTerm {
    std::uint64_t term = 0;
};

using ClientMessage = std::variant<LoginRequest, SubscribeRequest, ReadRequests, CancelRequests,
                                   ModifyRequests, ArchiveModifyRequest, PeriodRequest,
                                   LastMessagesRequest, TakeTerm, AcknowledgeRequests>;

// ---- server to client
// ----------------------------------------------------------------------------

struct LoginResult {
    std::uint8_t code = 0;  // 0: the client is logged in
    std::string text;       // why not
    // With code 0: of the last report change so far. A server that gives it answers orders, too.
    std::optional<std::uint64_t> sequence = {};
};

// The definition of a variable: texts by short keys, a number as its decimal text.
struct VariableDefinition {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
};

struct VariableDefinitions {
    std::vector<VariableDefinition> definitions;
    bool last = true;  // false: another piece follows
};

struct ValueUpdates {
    struct Entry {
        VariableHandle handle = 0;
        value::CVal value;
    };
    std::vector<Entry> entries;
    bool last = true;  // false: another piece of the answer to a subscription follows
};

struct AccessErrors {
    struct Entry {
        VariableHandle handle = 0;
        std::uint16_t code = 0;  // 0: no such variable
    };
    std::vector<Entry> entries;
};

// The answer to one ReadRequest, in one piece or several. A failed one has no values.
struct ReadAnswer {
    RequestId id = 0;
    std::uint16_t result = 0;         // 0: success
    std::vector<value::CVal> values;  // ascending by time
    bool last = true;
};

// Answers to modify requests, archive ones among them, to acknowledgements, and to orders with an
// id.
struct ModifyResults {
    struct Entry {
        RequestId id = 0;
        std::uint16_t result = 0;  // 0: success
    };
    std::vector<Entry> entries;
};

// The reports of a period have changed.
struct ReportChange {
    value::ValueKind kind = value::KindNone;  // hour, day, month or span
    std::int64_t time = 0;
    std::uint64_t sequence = 0;  // ascending in the life of the server's store; 0: none
};

struct LogMessage {
    int level = 0;
    std::int64_t time = 0;
    std::string text;
};

struct TermResult {
    std::uint8_t code = 0;   // 0: nothing stands against the term, 1: a later one has been taken
    std::uint64_t term = 0;  // the latest that the server has heard of the pair; 0: it keeps none
};

using ServerMessage = std::variant<LoginResult, VariableDefinitions, ValueUpdates, AccessErrors,
                                   ReadAnswer, ModifyResults, ReportChange, LogMessage, TermResult>;

}  // namespace kalvex::vantrel
