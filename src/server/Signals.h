// Signals: values that a data server generates by itself, so that a plant lives without devices.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::server {

enum class SignalKind : std::uint8_t { Constant, Ramp, Sine, Square, Walk, Counter };

class Signal {
  public:
    // From "sine mean=50 amplitude=5 period=600". Nothing, with the reason in `error`,
    // for a kind or a parameter that there is not, one that is missing or is no number,
    // and values that make no sense together.
    static std::optional<Signal> Parse(std::string_view text, platform::Notice& error);

    // The value at a time, in seconds since 1970-01-01 GMT. `last` is the value before it, if there
    // is one, and `elapsed` the seconds since then; they matter to walks and counters alone.
    // `random` is any number, another one each time.
    double ValueAt(std::int64_t time, std::optional<double> last, std::int64_t elapsed,
                   std::uint64_t random) const;

  private:
    Signal(SignalKind kind, std::vector<double> parameters)
        : m_kind(kind), m_parameters(std::move(parameters)) {}

    double Walk(std::optional<double> last, std::int64_t elapsed, std::uint64_t random) const;

    SignalKind m_kind;
    std::vector<double> m_parameters;  // in the order of the kind's row
};

// Evenly spread numbers that follow from `state`; any state will do.
std::uint64_t NextRandom(std::uint64_t& state);

}  // namespace kalvex::server
