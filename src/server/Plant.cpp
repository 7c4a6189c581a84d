#include "server/Plant.h"

#include <cmath>
#include <utility>

#include "value/Status.h"

namespace kalvex::server {

namespace {

// A value of the variable's type, or none.
value::CVal FirstValue(const VariableConfig& config, std::int64_t now) {
    value::CVal value = InitialValue(config);
    if (value.GetType() == value::ValueType::None) return NoValue();
    value.SetTime(now);
    return value;
}

std::uint16_t StatusOf(const PlantVariable& variable) {
    const std::uint16_t status = variable.value.GetStatus();
    if (!variable.alarmBits) return status;
    return static_cast<std::uint16_t>((status & ~kAlarmBits) | *variable.alarmBits);
}

}  // namespace

void Plant::Define(const std::vector<VariableConfig>& variables, const Rights& rights, Store& store,
                   std::int64_t now) {
    for (PlantVariable& variable : m_arrVariables) {
        m_retired.insert_or_assign(variable.id, std::move(static_cast<VariableState&>(variable)));
    }
    m_arrVariables.clear();
    m_byName.clear();
    m_byId.clear();
    m_changed.clear();
    m_arrVariables.reserve(variables.size());
    for (const VariableConfig& config : variables) {
        PlantVariable& variable = m_arrVariables.emplace_back();
        variable.config = config;
        variable.id = store.Register(config.name);
        variable.rule = rights.RuleFor(config.name);
        m_byName.emplace(config.name, m_arrVariables.size() - 1);
        m_byId.emplace(variable.id, m_arrVariables.size() - 1);
        std::optional<value::CVal> last;
        if (auto known = m_retired.extract(variable.id)) {
            static_cast<VariableState&>(variable) = std::move(known.mapped());
            last = std::move(variable.value);
        } else {
            last = store.LastValue(variable.id);
        }
        const bool hasLast = last && last->GetType() != value::ValueType::None;
        if (hasLast && last->Cast(config.type)) {
            variable.value = std::move(*last);
        } else if (value::CVal value = FirstValue(config, now);
                   value.GetType() != value::ValueType::None) {
            SetValue(m_arrVariables.size() - 1, std::move(value));
        } else {
            variable.value = std::move(value);
        }
        double number = 0;
        if (!variable.generated && IsKnownNumber(variable.value, number)) {
            variable.generated = number;
        }
    }
}

std::size_t Plant::Find(std::string_view name) const {
    const auto found = m_byName.find(std::string(name));
    return found == m_byName.end() ? kNone : found->second;
}

PlantVariable* Plant::Lookup(VariableId id) {
    const auto found = m_byId.find(id);
    return found == m_byId.end() ? nullptr : &m_arrVariables[found->second];
}

void Plant::Step(std::int64_t now, std::int64_t passed) {
    for (std::size_t index = 0; index < m_arrVariables.size(); ++index) {
        PlantVariable& variable = m_arrVariables[index];
        if (!variable.config.signal) continue;
        variable.generated =
            variable.config.signal->ValueAt(now, variable.generated, passed, NextRandom(m_random));
        value::CVal value(*variable.generated);
        value.Cast(variable.config.type);
        const value::CVal& old = variable.value;
        const bool same = old.GetStatus() == variable.alarmBits.value_or(0) &&
                          old.GetType() == value.GetType() && old == value;
        if (same) continue;
        value.SetTime(now);
        SetValue(index, std::move(value));
    }
}

void Plant::SetValue(std::size_t index, value::CVal value, const Origin& origin) {
    PlantVariable& variable = m_arrVariables[index];
    if (variable.alarmBits) m_judge(variable, value);
    variable.value = std::move(value);
    variable.value.SetStatus(StatusOf(variable));
    variable.origin = origin;
    variable.changedAt = variable.value.GetTime();
    MarkChanged(variable);
}

void Plant::ShowAlarms(PlantVariable& variable, std::int64_t now) {
    const std::uint16_t status = StatusOf(variable);
    if (variable.value.GetStatus() == status) return;
    variable.value.SetStatus(status);
    variable.changedAt = now;
    MarkChanged(variable);
}

void Plant::MarkChanged(PlantVariable& variable) {
    variable.saved = false;
    if (std::exchange(variable.changed, true)) return;
    m_changed.push_back(static_cast<std::size_t>(&variable - m_arrVariables.data()));
}

std::vector<std::size_t> Plant::TakeChanges() {
    for (const std::size_t index : m_changed) m_arrVariables[index].changed = false;
    return std::exchange(m_changed, {});
}

vantrel::VariableDefinition DefinitionOf(const VariableConfig& config) {
    vantrel::VariableDefinition definition;
    definition.name = config.name;
    definition.attributes.assign(config.attributes.begin(), config.attributes.end());
    return definition;
}

bool ConvertWritten(const VariableConfig& config, value::ValueKind kind, value::CVal& value) {
    const bool isReport = value::IsReport(kind);
    const std::uint16_t type = value.GetType();
    if (value.IsText() && value.Text().find('\0') != std::string_view::npos) return false;
    if (type == value::ValueType::None) {
        value.AddStatus(value::Status::Unknown);
        return kind != value::KindCurrent;
    }
    if (!value.IsText() && type != value::ValueType::Double && !value::ValueType::IsInteger(type))
        return false;
    if (config.type == value::ValueType::Text) {
        return value.Cast(value::ValueType::Text) && value.Text().size() <= kLongestText;
    }
    const bool keepsType = isReport && !value.IsText();
    if (!keepsType && !value.Cast(isReport ? value::ValueType::Double : config.type)) return false;
    double number = 0;
    return value.GetValData(value::ValueType::Double, &number) && std::isfinite(number) &&
           (isReport || IsBounded(config, number));
}

}  // namespace kalvex::server
