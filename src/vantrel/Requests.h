// Requests of a client connection and their answers. Main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "value/ArchiveValueList.h"
#include "vantrel/Messages.h"

namespace kalvex::vantrel {

class CClientConnection;

// A request with its outcome.
struct RequestRecord {
    std::uint16_t result = 0;  // 0: success
    std::string variable;
    value::CVal value;                         // a single report value, or what a write was to set
    value::CArchiveValueList* list = nullptr;  // of a request with a list, filled by now
};

enum class LossReason : std::uint8_t {
    NotConnected,
    QueueFull,   // too much waits for its answers
    Unanswered,  // sent; whether the server has done it is not known
};

// A write or an order that is not sent, or not again.
struct LostOrder {
    LossReason reason = LossReason::NotConnected;
    std::optional<PeriodAction> action;  // none: a write, or of no kind, an acknowledgement
    value::ValueKind kind = value::KindNone;
    std::string variable;
    std::int64_t time = 0;            // of the report or of the first archive value
    std::vector<value::CVal> values;  // of a write
};

// Where the answer to a read request arrives. Never called within the call that makes a request
// while the server can be reached.
class AnswerWindow {
  public:
    virtual ~AnswerWindow() = default;
    virtual void OnAnswer(value::ValueKind kind, RequestRecord record) = 0;
};

// One call that a connection received: the operation's name and those of its arguments that it has.
struct JournalEntry {
    std::string operation;
    std::optional<std::string> variable = {};
    std::optional<std::int64_t> from = {};
    std::optional<std::int64_t> to = {};
    std::optional<std::int64_t> time = {};
    std::optional<RequestId> id = {};
    std::optional<value::CVal> value = {};
    std::optional<std::vector<value::CVal>> values = {};
    std::optional<bool> list = {};             // the request carried a list for its answer
    std::optional<std::uint32_t> points = {};  // of a range that is asked for thinned
};

// Keeps account of the calls, for who wants to see what scripts ask of their servers.
class RequestJournal {
  public:
    virtual ~RequestJournal() = default;
    virtual void Record(const CClientConnection& connection, JournalEntry entry) = 0;
};

}  // namespace kalvex::vantrel
