// What a client keeps of a server's variable: its value and its definition. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "value/Value.h"
#include "vantrel/Messages.h"

namespace kalvex::vantrel {

// The definition of one server variable: attributes by key.
class CVarDefInfo {
  public:
    explicit CVarDefInfo(VariableDefinition definition) : m_definition(std::move(definition)) {}

    const std::string& GetName() const { return m_definition.name; }
    const std::string& GetText(std::string_view key) const;  // empty when there is none
    std::int64_t GetNumber(std::string_view key) const;      // 0 when there is none

  private:
    VariableDefinition m_definition;
};

using CObjInfoList = std::vector<CVarDefInfo>;

// The local object of one registered variable; the connection owns it and updates it in place.
class CVarVal {
  public:
    explicit CVarVal(std::string_view name) : m_name(name) {}
    virtual ~CVarVal() = default;
    CVarVal(const CVarVal&) = delete;
    CVarVal& operator=(const CVarVal&) = delete;

    const std::string& GetName() const { return m_name; }
    value::CVal& Value() { return m_value; }
    const value::CVal& Value() const { return m_value; }

    // What the server holds when it is asked for the variable.
    virtual void SetValue(value::CVal value) { m_value = std::move(value); }
    // A value that has been set since: the server tells of it, or confirms a write of this client.
    // It may bring about whatever a value can, but the end of this variable.
    virtual void SetControlValue(value::CVal value) { SetValue(std::move(value)); }

  private:
    std::string m_name;
    value::CVal m_value;
};

}  // namespace kalvex::vantrel
