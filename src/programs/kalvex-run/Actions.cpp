#include "programs/kalvex-run/Actions.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/JsonFile.h"
#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex::run {

namespace {

std::string PathOf(const RunScript& script) {
    return text::ToUtf8(script.Document().GetPathName());
}

std::string SetValue(RunScript& script, const Action& action) {
    const std::string name = text::ToUtf8(action.variable);
    operands::CVariable* variable = script.Document().Variables().Find(action.variable);
    if (variable == nullptr) {
        return fmt::format("{} has no variable {} to set", PathOf(script), name);
    }
    if (!value::IsOperatorText(action.text)) {
        return fmt::format(
            "{}: {} is no value for {}: a number, a text in double quotes, * or $ "
            "was expected",
            PathOf(script), text::ToUtf8(action.text), name);
    }
    value::CVal value = StoredValue(*variable, value::KindCurrent);
    value::ApplyOperatorText(value, action.text);
    const bool isSet = variable->SetValue(value, value::KindCurrent) != 0;
    script.Document().OnValueSet();
    if (isSet) return {};
    return fmt::format("{}: {} takes no value by then", PathOf(script), name);
}

std::string ToggleBreakpoint(RunScript& script, const Action& action) {
    const int count = script.Document().GetLineCount();
    if (action.line >= count) {
        return fmt::format("{} has no line {} for a breakpoint: its lines are 0 to {}",
                           PathOf(script), action.line, count - 1);
    }
    script.ToggleBreakpoint(action.line);
    return {};
}

// Nothing keeps it from being carried out.
template <void (*Do)(RunScript&)>
std::string Always(RunScript& script, const Action&) {
    Do(script);
    return {};
}

constexpr ActionRow kRows[] = {
    {"start", false, false, Always<[](RunScript& script) { script.Start(); }>},
    {"stop", false, false, Always<[](RunScript& script) { script.Document().Stop(); }>},
    {"step", false, false, Always<[](RunScript& script) { script.Document().Step(); }>},
    {"reset", false, false, Always<[](RunScript& script) { script.Document().Reset(); }>},
    {"minimise", false, false,
     Always<[](RunScript& script) { script.Document().SetMinimised(true); }>},
    {"restore", false, false,
     Always<[](RunScript& script) { script.Document().SetMinimised(false); }>},
    {"breakpoint", true, false, ToggleBreakpoint},
    {"setValue", false, true, SetValue},
};

const ActionRow* FindRow(std::string_view name) {
    const auto* row = std::ranges::find(kRows, name, &ActionRow::name);
    return row == std::end(kRows) ? nullptr : row;
}

bool ReadAction(platform::JsonFile& file, const platform::JsonNode& node, std::size_t scriptCount,
                Action& action) {
    std::int64_t script = 0;
    std::int64_t line = 0;
    std::string name;
    if (!file.Expect(node, platform::JsonNode::Type::Object, "an action must be an object") ||
        !file.GetInteger(node, "atTick", {.least = 1}, action.atTick) ||
        !file.GetInteger(node, "script", {.least = 0}, script) || !file.GetText(node, "do", name)) {
        return false;
    }
    if (static_cast<std::uint64_t>(script) >= scriptCount) {
        return file.Fault(
            *node.Find("script"),
            fmt::format("there is no script {}: the command line names {}", script, scriptCount));
    }
    action.script = static_cast<std::size_t>(script);
    action.row = FindRow(name);
    if (action.row == nullptr) {
        return file.Fault(*node.Find("do"), fmt::format("there is no action \"{}\"", name));
    }
    if (action.row->takesLine) {
        if (!file.GetInteger(node, "line", {0, INT32_MAX}, line)) return false;
        action.line = static_cast<int>(line);
    }
    if (action.row->takesValue) {
        if (!file.GetText(node, "variable", action.variable) ||
            !file.GetText(node, "text", action.text)) {
            return false;
        }
        action.variable = text::FromUtf8(action.variable);
        action.text = text::FromUtf8(action.text);
    }
    return true;
}

}  // namespace

bool ReadActions(const std::string& path, std::size_t scriptCount, std::vector<Action>& actions,
                 std::string& fault) {
    platform::JsonFile file(path);
    platform::JsonNode root;
    bool good = file.Read(root) &&
                file.Expect(root, platform::JsonNode::Type::Array, "the actions must be an array");
    std::int64_t reached = 0;
    for (std::size_t i = 0; good && i < root.items.size(); ++i) {
        const platform::JsonNode& node = root.items[i];
        Action action;
        good = ReadAction(file, node, scriptCount, action);
        if (good && action.atTick < reached) {
            good = file.Fault(node, fmt::format("tick {} comes after tick {}: the actions are not "
                                                "in order of tick",
                                                action.atTick, reached));
        }
        reached = action.atTick;
        actions.push_back(std::move(action));
    }
    fault = file.GetFault();
    return good;
}

}  // namespace kalvex::run
