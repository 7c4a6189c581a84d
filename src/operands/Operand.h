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
    // The value itself, to be read, where a local variable keeps it; null where it takes more.
    const value::CVal* Held(ScriptContext& script) {
        return m_isVariable ? m_name.Held(script) : nullptr;
    }
    // The value of what is known to be a string literal; null for anything else.
    const value::CVal* HeldText() const { return m_isText ? &Known<Literal>().text : nullptr; }
    // A variable that is not there.
    bool IsUndefined(ScriptContext& script) { return m_isVariable && m_name.IsUndefined(script); }
    std::string_view BaseName() const { return m_name.Base(); }
    // What is wrong with that.
    void RecordUndefined(ScriptContext& script) { m_name.Find(script); }
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
    // What is known of an operand that is no variable.
    struct Details {
        virtual ~Details() = default;
    };
    struct Property;
    struct Number;
    struct Literal final : Details {
        value::CVal text;
    };

    static bool ClassifyAndRead(Operand& operand, ScriptContext& script, value::CVal& out,
                                int wanted, bool report);
    Reader Classify();
    template <class Kind>
    Kind& NewDetails() {
        auto details = std::make_unique<Kind>();
        Kind& made = *details;
        m_details = std::move(details);
        return made;
    }
    template <class Kind>
    Kind& Known() const {
        return static_cast<Kind&>(*m_details);
    }
    const value::CVal* LookFurther(ScriptContext& script, value::CVal& scratch, int wanted);

    VariableName m_name;
    bool m_isVariable = false;  // known to be one
    bool m_isText = false;      // known to be a string literal
    Reader m_read = ClassifyAndRead;
    std::unique_ptr<Details> m_details;
    std::string_view m_text;  // from the first evaluation on without blanks around it
};

// Rows of the property table, for completion and the manual.
struct VariablePropertyRow {
    std::string_view name;  // with its dot
    std::string_view help;  // Polish, UTF-8; empty where there is none
};
std::span<const VariablePropertyRow> VariableProperties();

}  // namespace kalvex::operands
