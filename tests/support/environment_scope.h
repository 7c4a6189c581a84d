// Variables of the environment for the length of a test.
#pragma once

#include <optional>
#include <string>

namespace kalvex::support {

// Sets the variable, and puts back what there was.
class EnvironmentScope {
  public:
    EnvironmentScope(const char* name, const std::string& value);
    ~EnvironmentScope();
    EnvironmentScope(const EnvironmentScope&) = delete;
    EnvironmentScope& operator=(const EnvironmentScope&) = delete;

  private:
    const char* m_name;
    std::optional<std::string> m_former;
};

}  // namespace kalvex::support
