// Times of a schedule and its faults in words. Engine texts. Any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/ScheduleProof.h"

namespace kalvex::workbench {

// The times, which ascend, with their days; where they are at most two years in all, also the
// changes of the clocks since `start` on days that have no time among them.
std::vector<ScheduleFiring> DescribeFirings(std::span<const std::int64_t> times, std::int64_t start,
                                            const platform::Translator& translator);

// What is wrong with an entry that cannot be read.
std::string WhyUnreadable(std::string_view entry, const platform::Translator& translator);

}  // namespace kalvex::workbench
