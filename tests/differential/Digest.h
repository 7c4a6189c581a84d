// A number for all that could be seen of a world so far: the same scenario has another one only in
// a version of the program that does something else.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "differential/World.h"

namespace kalvex::differential {

class Digest {
  public:
    // The folder's path is left out of all texts.
    explicit Digest(std::string folder) : m_folder(std::move(folder)) {}

    // The world at the end of a tick.
    void Add(const World& world);
    std::uint64_t Value() const { return m_value; }

  private:
    void Add(std::string_view text);
    void Add(std::int64_t number);
    void Add(const value::CVal& value);
    void Add(const engine::RunState& state);
    void Add(const engine::LineStanding& standing);
    void Add(operands::CVariable& variable);

    std::string m_folder;
    std::size_t m_logSeen = 0;
    std::size_t m_messagesSeen = 0;
    std::uint64_t m_value = 14695981039346656037U;
};

}  // namespace kalvex::differential
