// What the engine asks of the data sources. The client interface implements it; a process without
// one has none. Main thread. Source and variable names are engine texts.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "operands/Variable.h"

namespace kalvex::engine {

class CKalvexDoc;

// Whether a server variable has a value that a script can read, and what keeps it from one.
enum class DataState {
    Usable,
    NoTarget,     // the script's variable is a pointer that leads nowhere
    NoElement,    // or a list without a known element under its iterator
    NotReadable,  // there are no such data to be read
    NoAddress,    // no connection can be made to the source
    Down,         // the source is out of reach
    Opening,      // being connected
    Login,        // the source has yet to answer the login
    LoginRefused,
    NotSubscribed,  // held back by SUBSCRIBE STOP
    NoVariable,     // the source does not have it
    NoAccess,       // or does not show it
    NoData,         // connected, and no data have come since
    NoValue,        // the source has none
    Unknown,        // the value's status says so
    Locked,         // LOCK keeps a value that cannot be read
    NotAsked,       // report: nobody has asked for it
    Asked,          // report: no answer yet
    NotThere,       // report: the source answered with an error, or was out of reach
    NoReport,       // report: the answer holds no value
};

struct DataCondition {
    std::string source;
    std::string variable;  // at the source
    DataState state = DataState::Usable;
    std::string reason = {};  // why the source is out of reach, translated, where that is known
};

class ScriptSources {
  public:
    virtual ~ScriptSources() = default;

    // A remote variable bound to a server variable; the registration may still be refused, which
    // the variable shows when it is read. Never null.
    virtual std::unique_ptr<operands::CVariable> CreateRemote(CKalvexDoc& document,
                                                              std::string_view name,
                                                              std::string_view source,
                                                              std::string_view variable) = 0;

    // Ends the binding of a remote variable whose document clears its run state.
    virtual void ReleaseRemote(operands::CVariable& variable) = 0;

    // How it is with the data of that kind of a remote variable.
    virtual DataCondition GetCondition(operands::CVariable& remote, value::ValueKind kind) = 0;

    // Differs from what it was whenever anything may have changed that a remote variable of any
    // script shows; never LinePromise::kAnyData.
    virtual std::uint64_t GetChangeCount() const = 0;

    // Subscription is held back while blocks nest; the reset form ends them all.
    virtual void BlockSubscribe() = 0;
    virtual void UnblockSubscribe(bool reset) = 0;

    // Has the document hear of changes in the reports of a kind; the notifications keep account of
    // what is to be ended. False when there is no such source or kind, or it is so already.
    virtual bool AddNotifyDoc(value::ValueKind kind, std::string_view source,
                              CKalvexDoc& document) = 0;
    virtual void RemoveNotifyDoc(value::ValueKind kind, std::string_view source,
                                 CKalvexDoc& document) = 0;

    // Names of a server's variables in the server's order; nothing when the list is not to be had.
    virtual std::optional<std::vector<std::string>> GetVariableNames(std::string_view source) = 0;
};

}  // namespace kalvex::engine
