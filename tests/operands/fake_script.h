// A script for the tests of what reads one: variables made by hand, an error slot, a clock that
// stands still, a log that keeps its lines, a user. Script texts in and out are UTF-8.
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
#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex {

class KeptLog final : public LogSink {
  public:
    void Log(std::string_view text, int level) override { lines.emplace_back(level, ToUtf8(text)); }

    std::vector<std::pair<int, std::string>> lines;
};

class FixedUser final : public Users {
  public:
    std::string GetActiveUserName() const override { return FromUtf8(name); }
    std::string GetActiveUserDescription() const override { return FromUtf8(description); }
    std::string GetAccountName() const override { return FromUtf8(account); }

    std::string name;
    std::string description;
    std::string account = "dyspozytor";
};

// A remote variable whose answers are set by hand.
class FakeRemote final : public CVariableStored {
  public:
    using CVariableStored::CVariableStored;

    VariableKind GetKind() const override { return VariableRemote; }
    int GetValue(CVal& out, ValueKind, int) override {
        if (answer == ReadValue) out = value;
        return answer;
    }
    int SetValue(const CVal& written, ValueKind) override {
        value = written;
        return 1;
    }
    int IsReady(ValueKind kind) override { return kind == readyKind ? 1 : 0; }
    int IsReportLoaded(ValueKind kind) override { return kind == loadedKind ? 1 : 0; }
    int IsReportInited(ValueKind kind) override { return kind == initedKind ? 1 : 0; }

    CVal value;
    ReadResult answer = ReadValue;
    ValueKind readyKind = KindNone;
    ValueKind loadedKind = KindNone;
    ValueKind initedKind = KindNone;
};

struct FakeWorld {
    static constexpr std::int64_t kStart = 1710050400;  // 2024-03-10 06:00:00 GMT

    explicit FakeWorld(const CFunctionTable& functions)
        : services{clock, log, translator, users, paths, functions} {}

    VirtualClock clock{kStart};
    KeptLog log;
    Translator translator;
    FixedUser users;
    Paths paths{"/skrypty"};
    ValueServices services;
};

inline const CFunctionTable& NoFunctions() {
    static const CFunctionTable table({});
    return table;
}

class FakeScript final : public FakeWorld, public CScriptContext {
  public:
    explicit FakeScript(const CFunctionTable& functions = NoFunctions())
        : FakeWorld(functions), CScriptContext(services) {}

    void SetError(int code, std::string_view text, bool force) override {
        if (!force && m_nErrorCode != ErrorNone && m_nErrorCode != ErrorOther) return;
        m_nErrorCode = code;
        m_strErrorText = text;
    }

    CVariableLocal& Local(std::string_view name, const CVal& value = CVal()) {
        auto& variable = Append<CVariableLocal>(name);
        variable.SetValue(value, KindCurrent);
        return variable;
    }
    CVariableList& List(std::string_view name, std::initializer_list<CVal> elements = {}) {
        auto& list = Append<CVariableList>(name);
        for (const CVal& element : elements) list.Add(element);
        return list;
    }
    CVariablePointer& Pointer(std::string_view name, std::string_view target) {
        auto& pointer = Append<CVariablePointer>(name, *this);
        pointer.SetTargetName(FromUtf8(target));
        return pointer;
    }
    FakeRemote& Remote(std::string_view name) { return Append<FakeRemote>(name); }

    // A variable's value, whether a script could use it or not.
    CVal Value(std::string_view name, ValueKind kind = KindCurrent) {
        CVal value;
        Variables().Find(FromUtf8(name))->GetValue(value, kind, 1);
        return value;
    }

    // The error slot as "code text", or "0" where there is none.
    std::string Error() const {
        std::string error = std::to_string(m_nErrorCode);
        if (!m_strErrorText.empty()) error += " " + ToUtf8(m_strErrorText);
        return error;
    }
    void ClearError() { SetError(ErrorNone, {}, true); }

    // What an expression comes to: type and content as in "150:7", or "failed" with the error slot.
    // A statement's error slot is empty when it begins.
    std::string Evaluate(std::string_view expression, int wanted = ValueType::Double) {
        ClearError();
        const std::string text = FromUtf8(expression);
        std::string_view rest = text;
        CVal value;
        if (!EvaluateExpression(*this, rest, value, wanted)) return "failed " + Error();
        return std::to_string(value.GetType()) + ":" + ToUtf8(ValueToText(value));
    }

  private:
    template <class Variable, class... Arguments>
    Variable& Append(std::string_view name, Arguments&... arguments) {
        return static_cast<Variable&>(
            Variables().Append(std::make_unique<Variable>(FromUtf8(name), arguments...)));
    }

    int m_nErrorCode = ErrorNone;
    std::string m_strErrorText;
};

}  // namespace kalvex
