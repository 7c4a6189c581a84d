// How large a text and a list may become. What makes one grow asks here first, so that no line
// takes all memory or the time of the others. Beyond the bound it fails, as where memory ends.
#pragma once

#include <cstddef>
#include <stdexcept>

namespace kalvex::value {

inline constexpr std::size_t kMostTextBytes = std::size_t{64} << 20;
inline constexpr std::size_t kMostElements = 10'000'000;

// Thrown, with nothing changed, to the edge of the line that runs, which fails.
class TextTooLong : public std::length_error {
  public:
    TextTooLong() : std::length_error("text") {}
};

class ListTooLong : public std::length_error {
  public:
    ListTooLong() : std::length_error("list") {}
};

[[noreturn]] void RefuseText();
[[noreturn]] void RefuseList();

// Before a text has so many bytes.
inline void CheckTextSize(std::size_t bytes) {
    if (bytes > kMostTextBytes) [[unlikely]]
        RefuseText();
}

// Before so many elements are added to a list that has `size` of them.
inline void CheckListRoom(std::size_t size, std::size_t more) {
    if (more > kMostElements - size) [[unlikely]]
        RefuseList();
}

}  // namespace kalvex::value
