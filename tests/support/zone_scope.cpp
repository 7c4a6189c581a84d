#include "support/zone_scope.h"

#include <ctime>

namespace kalvex::support {

ZoneScope::ZoneScope(const char* zone) {
    m_zone.emplace("TZ", zone);
    ::tzset();
}

ZoneScope::~ZoneScope() {
    m_zone.reset();
    ::tzset();
}

}  // namespace kalvex::support
