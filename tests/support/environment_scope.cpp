#include "support/environment_scope.h"

#include <cstdlib>

namespace kalvex::support {

EnvironmentScope::EnvironmentScope(const char* name, const std::string& value) : m_name(name) {
    if (const char* former = std::getenv(name)) m_former = former;
    ::setenv(name, value.c_str(), 1);
}

EnvironmentScope::~EnvironmentScope() {
    if (m_former) {
        ::setenv(m_name, m_former->c_str(), 1);
    } else {
        ::unsetenv(m_name);
    }
}

}  // namespace kalvex::support
