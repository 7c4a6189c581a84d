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
    // The text has less than 4 GB and outlives the name.
    explicit VariableName(std::string_view text)
        : m_kind(value::GetValueKind(text)),
          m_text(text.data()),
          m_length(static_cast<std::uint32_t>(text.size())),
          m_baseLength(static_cast<std::uint32_t>(BaseName(text).size())) {}

    std::string_view Text() const { return {m_text, m_length}; }
    std::string_view Base() const { return {m_text, m_baseLength}; }
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
    // There is no such variable.
    bool IsUndefined(ScriptContext& script) { return LookUp(script) == nullptr; }
    // Ahead of a use: the value is fetched from memory meanwhile.
    void Fetch() const {
        if (m_held == nullptr) return;
        __builtin_prefetch(m_held);
        __builtin_prefetch(m_held + 1);
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

    value::CVal* m_held = nullptr;
    CVariable* m_found = nullptr;
    std::uint32_t m_generation = 0;
    value::ValueKind m_kind = value::KindCurrent;
    const char* m_text = nullptr;
    std::uint32_t m_length = 0;
    std::uint32_t m_baseLength = 0;
};

}  // namespace kalvex::operands
