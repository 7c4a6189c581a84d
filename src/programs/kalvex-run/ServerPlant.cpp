#include "programs/kalvex-run/ServerPlant.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "server/Definitions.h"
#include "value/ValueText.h"

namespace kalvex::run {

namespace {

// What the signal of one variable has come to. As the random numbers follow from the place of the
// variable in the list, a run is the same every time.
class MovingSignal {
  public:
    MovingSignal(const server::VariableConfig& config, std::uint64_t place)
        : m_signal(*config.signal), m_type(config.type), m_random(place) {
        const value::CVal initial = server::InitialValue(config);
        if (initial.GetType() != value::ValueType::None) m_last = value::ValueToDouble(initial);
    }

    value::CVal operator()(std::int64_t now) {
        const std::int64_t elapsed = m_moved ? std::max<std::int64_t>(now - *m_moved, 0) : 0;
        m_last = m_signal.ValueAt(now, m_last, elapsed, server::NextRandom(m_random));
        m_moved = now;
        value::CVal value(*m_last);
        value.Cast(m_type);
        return value;
    }

  private:
    server::Signal m_signal;
    std::uint16_t m_type;
    std::uint64_t m_random;
    std::optional<double> m_last;
    std::optional<std::int64_t> m_moved;
};

vantrel::SimulatedVariable Simulated(const server::VariableConfig& config, std::uint64_t place) {
    vantrel::SimulatedVariable variable;
    variable.name = config.name;
    variable.attributes.assign(config.attributes.begin(), config.attributes.end());
    if (config.signal) {
        variable.signal = MovingSignal(config, place);
    } else if (value::CVal initial = server::InitialValue(config);
               initial.GetType() != value::ValueType::None) {
        variable.current.push_back({0, std::move(initial), false});
    }
    return variable;
}

}  // namespace

bool IsServerConfiguration(const std::string& path) {
    return path.ends_with(".toml");
}

bool ReadServerPlant(const std::string& path, const platform::Translator& translator,
                     vantrel::PlantDefinition& plant, std::string& fault) {
    server::Definitions definitions;
    std::vector<std::string> errors;
    if (!server::LoadVariables(path, translator, definitions, errors)) {
        fault = fmt::format("{}", fmt::join(errors, "\n"));
        return false;
    }
    vantrel::PlantSource& source = plant.sources.emplace_back();
    source.name = definitions.name;
    for (const server::VariableConfig& config : definitions.variables) {
        source.variables.push_back(Simulated(config, source.variables.size()));
    }
    return true;
}

}  // namespace kalvex::run
