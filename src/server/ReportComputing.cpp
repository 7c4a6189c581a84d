#include "server/ReportComputing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "value/Status.h"

namespace kalvex {

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
constexpr std::uint16_t kOwnBits = Status::Unknown | Status::SetByDevice | Status::SetByUser |
                                   Status::ReportLoaded | Status::ReportInited |
                                   Status::Supervisory;

// Gathers what goes into one report.
class Computing {
  public:
    void Add(double amount) {
        m_total += amount;
        m_fKnown = true;
    }
    void AddStatus(const CVal& value) { m_nStatus |= value.GetStatus() & ~kOwnBits; }
    void MissPart() { m_fComplete = false; }

    // `divisor` is 1 for a total.
    CVal Result(double divisor) const {
        CVal result = m_fKnown ? CVal(m_total / divisor) : CVal();
        result.SetStatus(m_nStatus);
        result.AddStatus(Status::ReportLoaded);
        if (!m_fKnown) {
            result.AddStatus(Status::Unknown);
        } else if (!m_fComplete) {
            result.AddStatus(Status::CalculateError);
        }
        return result;
    }

  private:
    double m_total = 0;
    std::uint16_t m_nStatus = 0;
    bool m_fKnown = false;
    bool m_fComplete = true;
};

CVal MeanOfArchive(const TimeSpan& span, const std::optional<CVal>& before,
                   const std::vector<CVal>& inside) {
    Computing computing;
    double seconds = 0;
    const auto stand = [&](const CVal& value, std::int64_t from, std::int64_t to) {
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

CVal SumOfArchive(const std::vector<CVal>& inside) {
    Computing computing;
    for (const CVal& value : inside) {
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

CVal IncreaseInArchive(const std::optional<CVal>& before, const std::vector<CVal>& inside) {
    Computing computing;
    double last = 0;
    bool begun = before && IsKnownNumber(*before, last);
    if (!begun) computing.MissPart();
    for (const CVal& value : inside) {
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

bool IsKnownNumber(const CVal& value, double& number) {
    if ((value.GetStatus() & Status::Unknown) != 0 || value.GetType() == ValueType::None) {
        return false;
    }
    CVal copy = value;
    return copy.Cast(ValueType::Double) && copy.GetValData(ValueType::Double, &number) &&
           std::isfinite(number);
}

CVal ComputeFromArchive(ReportRule rule, const TimeSpan& span, const std::optional<CVal>& before,
                        const std::vector<CVal>& inside) {
    switch (rule) {
        case ReportRule::Mean:
            return MeanOfArchive(span, before, inside);
        case ReportRule::Sum:
            return SumOfArchive(inside);
        default:
            return IncreaseInArchive(before, inside);
    }
}

CVal ComputeFromReports(ReportRule rule, const std::vector<ReportPart>& parts) {
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

}  // namespace kalvex
