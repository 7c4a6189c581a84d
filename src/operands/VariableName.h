// The name of a variable as a line has it, suffix and all. What it stands for is looked up once,
// and again only when the variables of the script have changed. Belongs to one script. Main thread.
#pragma once

#include <cstdint>
#include <string_view>

#include "operands/ScriptContext.h"
#include "operands/Variable.h"
#include "value/Status.h"

namespace kalvex::operands {

class VariableName {
  public:
    VariableName() = default;
    explicit VariableName(std::string_view text)  // outlives the name
        : m_text(text), m_kind(value::GetValueKind(text)) {}

    std::string_view Text() const { return m_text; }
    std::string_view Base() const { return BaseName(m_text); }
    value::ValueKind Kind() const { return m_kind; }

    // As FindVariable, ScriptContext::FindNamed and ScriptContext::FindList.
    CVariable* Find(ScriptContext& script) {
        if (CVariable* const variable = LookUp(script)) return variable;
        script.SetError(ErrorUndefinedVariable, Base(), false);
        return nullptr;
    }
    // The value itself, to be read and set, where a local variable keeps it; null where it takes
    // more.
    value::CVal* Held(ScriptContext& script) {
        LookUp(script);
        return m_held;
    }
    CVariable* FindNamed(ScriptContext& script);
    CVariableList* FindList(ScriptContext& script);

  private:
    CVariable* LookUp(ScriptContext& script) {
        const VariableTable& variables = script.Variables();
        if (m_generation != variables.Generation()) LookUpAnew(script);
        return m_found;
    }
    void LookUpAnew(ScriptContext& script);

    std::string_view m_text;
    CVariable* m_found = nullptr;
    value::CVal* m_held = nullptr;
    std::uint32_t m_generation = 0;
    value::ValueKind m_kind = value::KindCurrent;
};

}  // namespace kalvex::operands
