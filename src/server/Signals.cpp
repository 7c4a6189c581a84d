#include "server/Signals.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>
#include <numeric>
#include <span>

#include "value/ValueText.h"

namespace kalvex::server {

namespace {

struct Parameter {
    std::string_view name;
    std::optional<double> standard;  // none: it has to be given
};

struct KindRow {
    std::string_view word;
    SignalKind kind;
    std::span<const Parameter> parameters;
};

constexpr double kMiddle = std::numeric_limits<double>::quiet_NaN();  // stands for "in the middle"

constexpr Parameter kConstant[] = {{"value", {}}};
constexpr Parameter kRamp[] = {{"from", {}}, {"to", {}}, {"period", {}}};
constexpr Parameter kSine[] = {{"mean", {}}, {"amplitude", {}}, {"period", {}}, {"phase", 0.0}};
constexpr Parameter kSquare[] = {{"low", {}}, {"high", {}}, {"period", {}}, {"duty", 0.5}};
constexpr Parameter kWalk[] = {{"min", {}}, {"max", {}}, {"step", {}}, {"start", kMiddle}};
constexpr Parameter kCounter[] = {{"rate", {}}, {"start", 0.0}};

constexpr KindRow kKinds[] = {
    {"constant", SignalKind::Constant, kConstant},
    {"ramp", SignalKind::Ramp, kRamp},
    {"sine", SignalKind::Sine, kSine},
    {"square", SignalKind::Square, kSquare},
    {"walk", SignalKind::Walk, kWalk},
    {"counter", SignalKind::Counter, kCounter},
};

constexpr std::int64_t kLongestWalk = 86400;  // steps made up for at once

std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    for (;;) {
        const std::size_t begin = text.find_first_not_of(" \t");
        if (begin == std::string_view::npos) return words;
        text.remove_prefix(begin);
        words.push_back(text.substr(0, text.find_first_of(" \t")));
        text.remove_prefix(words.back().size());
    }
}

bool ReadNumber(std::string_view text, double& number) {
    return value::ConvertString2Double(text, &number) && std::isfinite(number);
}

// Null when the values make sense together.
const char* FaultOf(SignalKind kind, const std::vector<double>& values) {
    switch (kind) {
        case SignalKind::Ramp:
        case SignalKind::Sine:
            return values[2] > 0 ? nullptr : platform::Translatable("period musi być większe od 0");
        case SignalKind::Square:
            if (values[2] <= 0) return platform::Translatable("period musi być większe od 0");
            return values[3] >= 0 && values[3] <= 1
                       ? nullptr
                       : platform::Translatable("duty musi być od 0 do 1");
        case SignalKind::Walk:
            if (values[0] > values[1])
                return platform::Translatable("min nie może być większe od max");
            if (values[2] < 0) return platform::Translatable("step nie może być ujemne");
            return values[3] >= values[0] && values[3] <= values[1]
                       ? nullptr
                       : platform::Translatable("start musi być od min do max");
        default:
            return nullptr;
    }
}

// The part of the period that has passed, from 0 up to 1.
double Position(std::int64_t time, double phase, double period) {
    const double position = std::fmod(static_cast<double>(time) - phase, period) / period;
    return position < 0 ? position + 1 : position;
}

}  // namespace

std::optional<Signal> Signal::Parse(std::string_view text, platform::Notice& error) {
    const std::vector<std::string_view> words = Words(text);
    const std::string_view word = words.empty() ? std::string_view() : words.front();
    const auto row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                  [word](const KindRow& kind) { return kind.word == word; });
    if (row == std::end(kKinds)) {
        error = {platform::Translatable("nieznany rodzaj sygnału \"%s\""), {std::string(word)}};
        return std::nullopt;
    }
    std::vector<std::optional<double>> given(row->parameters.size());
    for (std::size_t index = 1; index < words.size(); ++index) {
        const std::size_t sign = words[index].find('=');
        const std::string_view name = words[index].substr(0, sign);
        const auto parameter =
            std::find_if(row->parameters.begin(), row->parameters.end(),
                         [name](const Parameter& known) { return known.name == name; });
        if (parameter == row->parameters.end()) {
            error = {platform::Translatable("nieznany parametr sygnału \"%s\""),
                     {std::string(name)}};
            return std::nullopt;
        }
        double number = 0;
        if (sign == std::string_view::npos || !ReadNumber(words[index].substr(sign + 1), number)) {
            error = {platform::Translatable("parametr %s musi być liczbą"), {std::string(name)}};
            return std::nullopt;
        }
        given[static_cast<std::size_t>(parameter - row->parameters.begin())] = number;
    }
    std::vector<double> values;
    for (std::size_t index = 0; index < given.size(); ++index) {
        const Parameter& parameter = row->parameters[index];
        if (!given[index] && !parameter.standard) {
            error = {platform::Translatable("brak parametru %s"), {std::string(parameter.name)}};
            return std::nullopt;
        }
        values.push_back(given[index] ? *given[index] : *parameter.standard);
    }
    if (row->kind == SignalKind::Walk && std::isnan(values[3])) {
        values[3] = std::midpoint(values[0], values[1]);
    }
    if (const char* fault = FaultOf(row->kind, values)) {
        error = {fault};
        return std::nullopt;
    }
    return Signal(row->kind, std::move(values));
}

double Signal::ValueAt(std::int64_t time, std::optional<double> last, std::int64_t elapsed,
                       std::uint64_t random) const {
    const std::vector<double>& value = m_parameters;
    switch (m_kind) {
        case SignalKind::Constant:
            return value[0];
        case SignalKind::Ramp:
            return value[0] + (value[1] - value[0]) * Position(time, 0, value[2]);
        case SignalKind::Sine:
            return value[0] +
                   value[1] * std::sin(2 * std::numbers::pi * Position(time, value[3], value[2]));
        case SignalKind::Square:
            return Position(time, 0, value[2]) < value[3] ? value[1] : value[0];
        case SignalKind::Walk:
            return Walk(last, elapsed, random);
        default:
            if (!last) return value[1];
            return *last + value[0] * static_cast<double>(std::max<std::int64_t>(elapsed, 0));
    }
}

double Signal::Walk(std::optional<double> last, std::int64_t elapsed, std::uint64_t random) const {
    const double min = m_parameters[0];
    const double max = m_parameters[1];
    const double step = m_parameters[2];
    double value = last ? std::clamp(*last, min, max) : m_parameters[3];
    if (!last) return value;
    for (std::int64_t second = 0; second < std::min(elapsed, kLongestWalk); ++second) {
        const double share = static_cast<double>(NextRandom(random) >> 11) * 0x1p-53;
        value = std::clamp(value + step * (2 * share - 1), min, max);
    }
    return value;
}

std::uint64_t NextRandom(std::uint64_t& state) {
    std::uint64_t mixed = state += 0x9e3779b97f4a7c15;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
    return mixed ^ (mixed >> 31);
}

}  // namespace kalvex::server
