// Reading and changing the status of a variable's value, and the names of the user.
#include "operands/FunctionArguments.h"
#include "operands/FunctionFamilies.h"
#include "operands/StatusArgument.h"

namespace kalvex::operands {

namespace {

FunctionResult ChangeStatus(FunctionCall& call, StatusAction action) {
    const std::string_view name = call.arguments[0];
    CVariable* variable = FindVariable(call.script, name);
    if (variable == nullptr) return FunctionResult::Failed;
    const value::ValueKind kind = value::GetValueKind(name);
    std::uint16_t word = 0;
    const bool known = action == StatusAction::Set || variable->GetStatus(&word, kind) != 0;
    const bool parsed = ParseStatusArgument(call.script, call.arguments[1], &word, action);
    if (!known || !parsed || variable->SetStatus(word, kind) == 0) return FunctionResult::Failed;
    call.out = value::CVal(1);
    return FunctionResult::Done;
}

FunctionResult Give(FunctionCall& call, std::string text) {
    call.out = value::CVal(std::move(text));
    return FunctionResult::Done;
}

}  // namespace

FunctionResult StatusFunction(FunctionCall& call) {
    std::uint16_t word = 0;
    const bool known = GetVariableStatus(call.script, call.arguments[0], &word);
    const std::string_view wanted = call.arguments[1];
    if (const std::optional<std::uint16_t> bit = value::StatusBit(wanted)) {
        call.out = value::CVal((word & *bit) != 0);
    } else if (wanted.empty()) {
        call.out = value::CVal(word);
    } else {
        const std::optional<int> bits = NumberArgument(call, 1);
        if (!bits) return FunctionResult::Failed;
        call.out = value::CVal((word & *bits) != 0);
    }
    return known ? FunctionResult::Done : FunctionResult::Failed;
}

FunctionResult SetStatusFunction(FunctionCall& call) {
    return ChangeStatus(call, StatusAction::Set);
}

FunctionResult AddStatusFunction(FunctionCall& call) {
    return ChangeStatus(call, StatusAction::Add);
}

FunctionResult RemoveStatusFunction(FunctionCall& call) {
    return ChangeStatus(call, StatusAction::Remove);
}

FunctionResult SorvaneUserName(FunctionCall& call) {
    return Give(call, call.script.Services().users.GetActiveUserName());
}

FunctionResult SorvaneUserDescription(FunctionCall& call) {
    return Give(call, call.script.Services().users.GetActiveUserDescription());
}

FunctionResult WindowsUserName(FunctionCall& call) {
    return Give(call, call.script.Services().users.GetAccountName());
}

}  // namespace kalvex::operands
