// The values of a script's variables, out of the messages of a module. UTF-8, but for messages.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "programs/kalvexctl/Table.h"

namespace kalvex::kalvexctl {

struct VariableSlot {
    std::string time;
    int status = 0;
    std::string text;

    bool operator==(const VariableSlot&) const = default;
};

struct VariableRow {
    std::string name;
    std::vector<std::optional<VariableSlot>> slots;  // one, or five; nothing where none was read

    bool operator==(const VariableRow&) const = default;
};

// Of an engine text with the code for values; nothing when it is none. A text may hold whatever
// separates slots: what cannot be told apart counts as text.
std::optional<VariableRow> ReadVariableValues(std::string_view message);

Row RowOf(const VariableRow& variable);
// An object in a line.
std::string VariablesJson(const std::string& script, const std::vector<VariableRow>& variables);

// Of slots, for the head of a table and the keys of JSON.
std::vector<std::string> SlotNames();

}  // namespace kalvex::kalvexctl
