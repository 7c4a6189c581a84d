// One operand of a line: a schedule word, a property, a time expression, a literal or a variable.
// What its text alone tells is worked out when it is evaluated first, and kept as long as the
// operand. Belongs to one script. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "operands/ScriptContext.h"
#include "operands/VariableName.h"
#include "value/Value.h"

namespace kalvex::operands {

// Behind the name of a variable: the time of its value, to be read and to be set.
inline constexpr std::string_view kTimestamp = ".TIMESTAMP";

struct ListProperty;
struct TimeProperty;
struct VariableProperty;

class Operand {
  public:
    Operand() = default;
    explicit Operand(std::string_view text) : m_text(text) {}  // outlives the operand

    std::string_view Text() const { return m_text; }
    operator std::string_view() const { return m_text; }
    bool empty() const { return m_text.empty(); }

    // A variable, and nothing that comes before variables.
    bool IsVariable() {
        if (m_read == ClassifyAndRead) m_read = Classify();
        return m_isVariable;
    }

    // `wanted` is a type code that numeric literals are converted to. False leaves `out` undefined;
    // with `report` the errors of type and remote kinds are recorded too.
    bool Evaluate(ScriptContext& script, value::CVal& out, int wanted, bool report) {
        return m_read(*this, script, out, wanted, report);
    }
    // The same with `report`: the value where it is kept, or in `scratch`; null when there is none.
    // Valid until a variable changes.
    const value::CVal* Look(ScriptContext& script, value::CVal& scratch, int wanted) {
        if (m_isVariable) {
            if (const value::CVal* value = m_name.Held(script)) return value;
        }
        return LookFurther(script, scratch, wanted);
    }

  private:
    using Reader = bool (*)(Operand& operand, ScriptContext& script, value::CVal& out, int wanted,
                            bool report);
    struct Readers;
    // What is known of numbers and properties.
    struct Details {
        std::unique_ptr<Operand> base;  // what a time property is asked of
        const ListProperty* listProperty = nullptr;
        const TimeProperty* timeProperty = nullptr;
        double number = 0;
        std::int64_t integer = 0;  // the number as the integer type that was wanted last
        int integerType = 0;
    };

    static bool ClassifyAndRead(Operand& operand, ScriptContext& script, value::CVal& out,
                                int wanted, bool report);
    Reader Classify();
    Details& NewDetails() { return *(m_details = std::make_unique<Details>()); }
    const value::CVal* LookFurther(ScriptContext& script, value::CVal& scratch, int wanted);

    std::string_view m_text;  // from the first evaluation on without blanks around it
    Reader m_read = ClassifyAndRead;
    VariableName m_name;
    std::unique_ptr<Details> m_details;
    bool m_isVariable = false;  // known to be one
};

// Rows of the property table, for completion and the manual.
struct VariablePropertyRow {
    std::string_view name;  // with its dot
    std::string_view help;  // Polish, UTF-8; empty where there is none
};
std::span<const VariablePropertyRow> VariableProperties();

}  // namespace kalvex::operands
