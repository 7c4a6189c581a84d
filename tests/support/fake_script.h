// A script for the tests of what reads one: variables made by hand, a clock that stands still,
// a log that keeps its lines, a user. Script texts in and out are UTF-8.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "operands/KeywordFunction.h"
#include "operands/OperandEvaluator.h"
#include "operands/ScriptContext.h"
#include "platform/Clock.h"
#include "support/fixed_user.h"
#include "support/hand_remote.h"
#include "support/log_recorder.h"
#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex::support {

struct FakeWorld {
    static constexpr std::int64_t kStart = 1710050400;  // 2024-03-10 06:00:00 GMT

    explicit FakeWorld(const operands::FunctionTable& functions)
        : services{clock, log, translator, users, paths, functions} {
        users.account = "dyspozytor";
    }

    platform::VirtualClock clock{kStart};
    LogRecorder log;
    platform::Translator translator;
    FixedUser users;
    platform::Paths paths{"/skrypty"};
    operands::ValueServices services;
};

inline const operands::FunctionTable& NoFunctions() {
    static const operands::FunctionTable table({});
    return table;
}

class FakeScript final : public FakeWorld, public operands::ScriptContext {
  public:
    explicit FakeScript(const operands::FunctionTable& functions = NoFunctions())
        : FakeWorld(functions), operands::ScriptContext(services) {}

    operands::CVariableLocal& Local(std::string_view name,
                                    const value::CVal& value = value::CVal()) {
        auto& variable = Append<operands::CVariableLocal>(name);
        variable.SetValue(value, value::KindCurrent);
        return variable;
    }
    operands::CVariableList& List(std::string_view name,
                                  std::initializer_list<value::CVal> elements = {}) {
        auto& list = Append<operands::CVariableList>(name);
        for (const value::CVal& element : elements) list.Add(element);
        return list;
    }
    operands::CVariablePointer& Pointer(std::string_view name, std::string_view target) {
        auto& pointer = Append<operands::CVariablePointer>(name, *this);
        pointer.SetTargetName(text::FromUtf8(target));
        return pointer;
    }
    HandRemote& Remote(std::string_view name) { return Append<HandRemote>(name); }

    // A variable's value, whether a script could use it or not.
    value::CVal Value(std::string_view name, value::ValueKind kind = value::KindCurrent) {
        value::CVal value;
        Variables().Find(text::FromUtf8(name))->GetValue(value, kind, 1);
        return value;
    }

    // The error slot as "code text", or "0" where there is none.
    std::string Error() const {
        std::string error = std::to_string(LastError().m_nErrorCode);
        if (const std::string_view text = LastError().m_strErrorText; !text.empty()) {
            error += " " + text::ToUtf8(text);
        }
        return error;
    }
    void ClearError() { SetError(operands::ErrorNone, {}, true); }

    // What an expression comes to: type and content as in "150:7", or "failed" with the error slot.
    // A statement's error slot is empty when it begins.
    std::string Evaluate(std::string_view expression, int wanted = value::ValueType::Double) {
        ClearError();
        const std::string text = text::FromUtf8(expression);
        std::string_view rest = text;
        value::CVal value;
        if (!operands::EvaluateExpression(*this, rest, value, wanted)) return "failed " + Error();
        return std::to_string(value.GetType()) + ":" + text::ToUtf8(value::ValueToText(value));
    }

  private:
    template <class Variable, class... Arguments>
    Variable& Append(std::string_view name, Arguments&... arguments) {
        return static_cast<Variable&>(
            Variables().Append(std::make_unique<Variable>(text::FromUtf8(name), arguments...)));
    }
};

}  // namespace kalvex::support
