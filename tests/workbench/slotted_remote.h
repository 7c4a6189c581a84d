// A remote variable whose slots a test fills by hand; a script could use none of them.
#pragma once

#include <map>
#include <memory>
#include <string_view>

#include "operands/ScriptContext.h"
#include "operands/Variable.h"

namespace kalvex::workbench {

class SlottedRemote final : public operands::VariableStored {
  public:
    using operands::VariableStored::VariableStored;

    static SlottedRemote& In(operands::ScriptContext& script, std::string_view name) {
        return static_cast<SlottedRemote&>(
            script.Variables().Append(std::make_unique<SlottedRemote>(name)));
    }

    operands::VariableKind GetKind() const override { return operands::VariableRemote; }
    int GetValue(value::CVal& out, value::ValueKind kind, int mode) override {
        const auto value = values.find(kind);
        if (value == values.end() || mode != operands::kAsStored) return operands::ReadNothing;
        out = value->second;
        const auto answer = answers.find(kind);
        return answer == answers.end() ? operands::ReadValue : answer->second;
    }
    int SetValue(const value::CVal& value, value::ValueKind kind) override {
        values[kind] = value;
        return takes ? 1 : 0;
    }

    std::map<value::ValueKind, value::CVal> values;
    std::map<value::ValueKind, operands::ReadResult> answers;  // another one than ReadValue
    bool takes = true;
};

}  // namespace kalvex::workbench
