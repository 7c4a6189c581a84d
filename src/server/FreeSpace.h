// Tells in time that the disk of the data is getting full. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/Translator.h"

namespace kalvex::server {

class FreeSpace {
  public:
    // Bytes that are free now; nothing when the system does not tell.
    using Look = std::function<std::optional<std::uint64_t>()>;

    explicit FreeSpace(Look look) : m_look(std::move(look)) {}

    // At least once a second, with the seconds that have elapsed and the bytes that are little, 0
    // for none. Looks each half minute. What is to be said, if anything: that there is little,
    // again with each halving, and that there is enough again, which is a quarter more.
    platform::Notice Step(std::int64_t elapsed, std::uint64_t little);

    // Of the last look.
    std::optional<std::uint64_t> Bytes() const { return m_bytes; }

  private:
    const Look m_look;
    std::optional<std::int64_t> m_lastLook;
    std::optional<std::uint64_t> m_bytes;
    std::optional<std::uint64_t> m_told;  // below so many it is told again; none: there is enough
};

}  // namespace kalvex::server
