// How many connections each of those may have who come to a server. Called by one thread at a time;
// times are in milliseconds of a clock that never goes back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace kalvex::vantrel {

class Visitors {
  public:
    // So many connections in all.
    explicit Visitors(std::size_t limit) : m_limit(limit) {}

    enum class Entry { Granted, Crowd, CrowdOfOne };
    // Whether one more may come from there: from another machine by its address, from this one by
    // the account. The last quarter of all is for machines from which somebody has logged in within
    // the last hour; for each of them the bound is three quarters of all, for an account of this
    // machine half of it, for any other machine a quarter.
    Entry Ask(const std::string& from, bool local, std::int64_t now) const;

    void OnCome(const std::string& from);
    void OnGone(const std::string& from);
    void OnLogin(const std::string& from, std::int64_t now);

    std::size_t Count() const { return m_count; }

  private:
    const std::size_t m_limit;
    std::size_t m_count = 0;
    std::map<std::string, std::size_t> m_connections;
    std::map<std::string, std::int64_t> m_logins;  // the last ones
};

}  // namespace kalvex::vantrel
