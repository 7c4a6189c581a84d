// A time zone for the length of a test.
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

namespace kalvex {

class LocalZone {
  public:
    explicit LocalZone(const char* zone) {
        if (const char* before = std::getenv("TZ")) m_strBefore = before;
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    ~LocalZone() {
        ::setenv("TZ", m_strBefore.c_str(), 1);
        ::tzset();
    }
    LocalZone(const LocalZone&) = delete;
    LocalZone& operator=(const LocalZone&) = delete;

  private:
    std::string m_strBefore;
};

}  // namespace kalvex
