#include "programs/kalvex-run/Actions.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/JsonFile.h"
#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex::run {

namespace {

void SetValue(RunScript& script, const Action& action) {
    operands::CVariable* variable = script.Document().Variables().Find(action.variable);
    if (variable == nullptr) {
        fmt::print(stderr, "kalvex-run: tick {}: {} has no variable {} to set\n", action.atTick,
                   text::ToUtf8(script.Document().GetPathName()), text::ToUtf8(action.variable));
        return;
    }
    value::CVal value = StoredValue(*variable, value::KindCurrent);
    value::ApplyOperatorText(value, action.text);
    variable->SetValue(value, value::KindCurrent);
    script.Document().OnValueSet();
}

constexpr ActionRow kRows[] = {
    {"start", false, false, [](RunScript& script, const Action&) { script.Start(); }},
    {"stop", false, false, [](RunScript& script, const Action&) { script.Document().Stop(); }},
    {"step", false, false, [](RunScript& script, const Action&) { script.Document().Step(); }},
    {"reset", false, false, [](RunScript& script, const Action&) { script.Document().Reset(); }},
    {"minimise", false, false,
     [](RunScript& script, const Action&) { script.Document().SetMinimised(true); }},
    {"restore", false, false,
     [](RunScript& script, const Action&) { script.Document().SetMinimised(false); }},
    {"breakpoint", true, false,
     [](RunScript& script, const Action& action) { script.ToggleBreakpoint(action.line); }},
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
