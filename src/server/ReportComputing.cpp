#include "server/ReportComputing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "value/Status.h"

namespace kalvex::server {

namespace {

struct RuleRow {
    std::string_view word;
    ReportRule rule;
};

constexpr RuleRow kRules[] = {
    {"mean", ReportRule::Mean},
    {"sum", ReportRule::Sum},
    {"increase", ReportRule::Increase},
};

// Bits that speak of the single value and not of what is computed from it.
constexpr std::uint16_t kOwnBits = value::Status::Unknown | value::Status::SetByDevice |
                                   value::Status::SetByUser | value::Status::ReportLoaded |
                                   value::Status::ReportInited | value::Status::Supervisory;

// Gathers what goes into one report.
class Computing {
  public:
    void Add(double amount) {
        m_total += amount;
        m_known = true;
    }
    void AddStatus(const value::CVal& value) { m_status |= value.GetStatus() & ~kOwnBits; }
    void MissPart() { m_complete = false; }

    // `divisor` is 1 for a total.
    value::CVal Result(double divisor) const {
        value::CVal result = m_known ? value::CVal(m_total / divisor) : value::CVal();
        result.SetStatus(m_status);
        result.AddStatus(value::Status::ReportLoaded);
        if (!m_known) {
            result.AddStatus(value::Status::Unknown);
        } else if (!m_complete) {
            result.AddStatus(value::Status::CalculateError);
        }
        return result;
    }

  private:
    double m_total = 0;
    std::uint16_t m_status = 0;
    bool m_known = false;
    bool m_complete = true;
};

value::CVal MeanOfArchive(const TimeSpan& span, const std::optional<value::CVal>& before,
                          const std::vector<value::CVal>& inside) {
    Computing computing;
    double seconds = 0;
    const auto stand = [&](const value::CVal& value, std::int64_t from, std::int64_t to) {
        if (to <= from) return;
        computing.AddStatus(value);
        double number;
        if (!IsKnownNumber(value, number)) {
            computing.MissPart();
            return;
        }
        const auto weight = static_cast<double>(to - from);
        computing.Add(number * weight);
        seconds += weight;
    };
    const std::int64_t first = inside.empty() ? span.end : inside.front().GetTime();
    if (before) {
        stand(*before, span.begin, first);
    } else if (first > span.begin) {
        computing.MissPart();
    }
    for (std::size_t index = 0; index < inside.size(); ++index) {
        const bool last = index + 1 == inside.size();
        stand(inside[index], inside[index].GetTime(),
              last ? span.end : inside[index + 1].GetTime());
    }
    return computing.Result(seconds);
}

value::CVal SumOfArchive(const std::vector<value::CVal>& inside) {
    Computing computing;
    for (const value::CVal& value : inside) {
        computing.AddStatus(value);
        double number;
        if (IsKnownNumber(value, number)) {
            computing.Add(number);
        } else {
            computing.MissPart();
        }
    }
    return computing.Result(1);
}

value::CVal IncreaseInArchive(const std::optional<value::CVal>& before,
                              const std::vector<value::CVal>& inside) {
    Computing computing;
    double last = 0;
    bool begun = before && IsKnownNumber(*before, last);
    if (!begun) computing.MissPart();
    for (const value::CVal& value : inside) {
        computing.AddStatus(value);
        double reading;
        if (!IsKnownNumber(value, reading)) continue;
        if (begun) computing.Add(reading >= last ? reading - last : reading);
        last = reading;
        begun = true;
    }
    return computing.Result(1);
}

}  // namespace

std::optional<ReportRule> ReportRuleFromWord(std::string_view word) {
    for (const RuleRow& row : kRules) {
        if (row.word == word) return row.rule;
    }
    return std::nullopt;
}

bool IsKnownNumber(const value::CVal& value, double& number) {
    if ((value.GetStatus() & value::Status::Unknown) != 0 ||
        value.GetType() == value::ValueType::None) {
        return false;
    }
    value::CVal copy = value;
    return copy.Cast(value::ValueType::Double) &&
           copy.GetValData(value::ValueType::Double, &number) && std::isfinite(number);
}

value::CVal ComputeFromArchive(ReportRule rule, const TimeSpan& span,
                               const std::optional<value::CVal>& before,
                               const std::vector<value::CVal>& inside) {
    switch (rule) {
        case ReportRule::Mean:
            return MeanOfArchive(span, before, inside);
        case ReportRule::Sum:
            return SumOfArchive(inside);
        default:
            return IncreaseInArchive(before, inside);
    }
}

value::CVal ComputeFromReports(ReportRule rule, const std::vector<ReportPart>& parts) {
    Computing computing;
    double seconds = 0;
    for (const ReportPart& part : parts) {
        double number;
        if (part.value) computing.AddStatus(*part.value);
        if (!part.value || !IsKnownNumber(*part.value, number)) {
            computing.MissPart();
            continue;
        }
        const auto weight = rule == ReportRule::Mean ? static_cast<double>(part.length) : 1.0;
        computing.Add(number * weight);
        seconds += weight;
    }
    return computing.Result(rule == ReportRule::Mean ? seconds : 1);
}

}  // namespace kalvex::server
