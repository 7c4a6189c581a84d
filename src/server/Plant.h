// The variables of a data server with their current values, and the signals that move them. Main
// thread.
//
// An index is a place in the list and means something until the list is made anew. What outlasts a
// call keeps the id of a variable instead, which is one variable's for ever, and looks it up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "server/Definitions.h"
#include "server/Rights.h"
#include "server/Store.h"
#include "vantrel/Messages.h"

namespace kalvex::server {

class Session;

// What a variable has come to; it stays while the configuration does without the variable.
struct VariableState {
    // Of the variable's type, or without content and UNKNOWN while there is none.
    value::CVal value;
    Origin origin;                    // of the value
    std::optional<double> generated;  // what the signal has come to, uncut by the type
    bool saved = true;
    std::size_t unarchived = 0;  // its last changes have no second of their own in the archive yet
};

struct PlantVariable : VariableState {
    struct Subscriber {
        Session* session;
        vantrel::VariableHandle handle;
    };

    VariableConfig config;
    VariableId id = 0;           // in the store
    std::size_t rule = 0;        // of the rights
    bool changed = false;        // since the changes were last taken
    std::int64_t changedAt = 0;  // later than the time of the value when its status alone has
    // The bits of kAlarmBits in its status, while the server keeps them.
    std::optional<std::uint16_t> alarmBits;
    std::vector<Subscriber> subscribers;
};

class Plant {
  public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    // Makes the variables anew. Each gets the value that it had when it was last here, or that the
    // store has kept for it, or the one of its definition, and no subscribers.
    void Define(const std::vector<VariableConfig>& variables, const Rights& rights, Store& store,
                std::int64_t now);

    std::size_t Size() const { return m_arrVariables.size(); }
    std::size_t Find(std::string_view name) const;  // kNone when there is no such variable
    PlantVariable& At(std::size_t index) { return m_arrVariables[index]; }
    const PlantVariable& At(std::size_t index) const { return m_arrVariables[index]; }
    // Null when there is no such variable, or none any more.
    PlantVariable* Lookup(VariableId id);

    // Of the variables that have been here and are not in the list.
    std::unordered_map<VariableId, VariableState>& Retired() { return m_retired; }

    // Moves the signals to that time, so many seconds on. A value that comes out the same keeps its
    // time.
    void Step(std::int64_t now, std::int64_t passed);

    // Sets a current value as it stands, but for alarm bits that the server keeps.
    void SetValue(std::size_t index, value::CVal value, const Origin& origin = {});

    // Is called with each value that is set of a variable whose alarm bits the server keeps, and
    // brings these bits up to date. Set before Define.
    using Judge = std::function<void(PlantVariable& variable, const value::CVal& value)>;
    void OnValue(Judge judge) { m_judge = std::move(judge); }

    // Brings the status of the value into line with the alarm bits, at that time.
    void ShowAlarms(PlantVariable& variable, std::int64_t now);

    // The variables whose values have been set since the last call, each once.
    std::vector<std::size_t> TakeChanges();

  private:
    void MarkChanged(PlantVariable& variable);

    std::vector<PlantVariable> m_arrVariables;
    std::unordered_map<std::string, std::size_t> m_byName;
    std::unordered_map<VariableId, std::size_t> m_byId;
    std::unordered_map<VariableId, VariableState> m_retired;
    std::vector<std::size_t> m_changed;
    std::uint64_t m_random = 0;
    Judge m_judge;
};

// What a client is told of the variable.
vantrel::VariableDefinition DefinitionOf(const VariableConfig& config);

// Turns what a client writes into a value of the variable: of its type for a current or archive
// value, of any number's type for a report of a numeric variable. Status and time stay. False when
// the value does not read as the type, is not finite, is outside the bounds, is too long, has the
// character of code 0, or, for a current value, has no content.
bool ConvertWritten(const VariableConfig& config, value::ValueKind kind, value::CVal& value);

}  // namespace kalvex::server
