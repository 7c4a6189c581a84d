// Axes of a trend: where the steps are and what stands there, what part is seen, and the values of
// the cursor as texts. Local time, as in LocalTime.h. Engine texts. Any thread, one at a time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/TrendSeries.h"

namespace kalvex::workbench {

struct TrendStep {
    double place;
    std::string label;
};

// At multiples of 1, 2 or 5 times a power of ten, at most so many, from low to high.
std::vector<TrendStep> ValueSteps(double low, double high, int most);

// At multiples of whole seconds, minutes, hours, days, months or years of the local clock, from
// `from` to `to`. The first step and the first of each day bear the date, and where the clocks
// change in between all steps bear the zone. A reading that comes twice has a step for each where
// steps are an hour apart or less.
std::vector<TrendStep> TimeSteps(std::int64_t from, std::int64_t to, int most);

// The range with a margin, so that the line touches no edge; a range of one value has height, too.
TrendRange WithMargin(TrendRange range);

// "12.50 m3/h", with the words of the status behind it where there are any.
std::string TrendValueText(const TrendPoint& point, std::string_view unit,
                           const platform::Translator& translator);
// "2024-03-31 03:00:00 CEST", or "element 12" (from 1) of a list.
std::string TrendPlaceText(const TrendPoint& point, bool isTime,
                           const platform::Translator& translator);
// The words of the bits, parted by blanks.
std::string StatusText(std::uint16_t status);

// The part of x that is seen.
class TrendView {
  public:
    // All of it; a range of one place gets a width.
    void Show(TrendRange range);
    // Around a place, which stays where it is. Below 1 nearer.
    void Zoom(double factor, double around);
    void Move(double widths) { m_seen = Shifted(widths); }

    double From() const { return m_seen.low; }
    double To() const { return m_seen.high; }
    double Width() const { return m_seen.high - m_seen.low; }

  private:
    TrendRange Shifted(double widths) const;

    TrendRange m_seen{0, 1};
};

}  // namespace kalvex::workbench
