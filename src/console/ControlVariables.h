// What a module publishes for its consoles: the level of its log, which scripts are opened and
// closed, and three variables of each script. Main thread; engine texts.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "console/ConsoleMessages.h"
#include "vantrel/VarVal.h"

namespace kalvex::console {

enum class ControlKind { LogLevel, DocumentInfo, Command, List, Line };

// A variable of a script is named by the script's path with this before it.
struct ScriptVariable {
    ControlKind kind;
    std::string_view prefix;
};

// In the order of the lookup by name.
inline constexpr ScriptVariable kScriptVariables[] = {
    {ControlKind::Command, ""},
    {ControlKind::List, kListPrefix},
    {ControlKind::Line, kLinePrefix},
};

// Of the variable of a script; empty for another kind.
std::string_view PrefixOf(ControlKind kind);

class CVarRCCtrl final : public vantrel::CVarVal {
  public:
    using Handler = std::function<void(CVarRCCtrl&)>;

    CVarRCCtrl(ControlKind kind, std::string_view name, const Handler& handler)
        : CVarVal(name), m_kind(kind), m_handler(handler) {}

    ControlKind GetKind() const { return m_kind; }
    // The path of a script's variable, which is its name without the prefix.
    std::string_view GetScript() const;

    // A client has written: the value is kept, and the handler does what it asks for.
    void SetValue(value::CVal value) override;
    // The module sets it.
    void SetControlValue(value::CVal value) override { Value() = std::move(value); }

  private:
    const ControlKind m_kind;
    const Handler& m_handler;
};

// Of a script: its command, list and line variable.
std::array<std::string, 3> ControlNames(std::string_view path);

class ControlVariables {
  public:
    // The handler hears of what clients write.
    explicit ControlVariables(CVarRCCtrl::Handler handler);
    ControlVariables(const ControlVariables&) = delete;
    ControlVariables& operator=(const ControlVariables&) = delete;

    CVarRCCtrl& LogLevel() { return m_logLevel; }
    CVarRCCtrl& DocumentInfo() { return m_documentInfo; }

    // Three more, whether there are some of the name or not; lookups find the oldest.
    void CreateForScript(std::string_view path);
    // All of the script.
    void RemoveOfScript(std::string_view path);

    CVarRCCtrl* FindControlVariable(std::string_view name);
    // Of the script; null when there is none.
    CVarRCCtrl* Find(ControlKind kind, std::string_view path);

  private:
    // By the path of the script, the oldest of a path first.
    using Variables = std::multimap<std::string, std::unique_ptr<CVarRCCtrl>, std::less<>>;

    Variables& VariablesOf(ControlKind kind);

    const CVarRCCtrl::Handler m_handler;
    CVarRCCtrl m_logLevel;
    CVarRCCtrl m_documentInfo;
    std::array<Variables, 3> m_ofScripts;  // commands, lists, lines
};

}  // namespace kalvex::console
