// The points of a trend as a file for spreadsheets. Any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/Translator.h"
#include "workbench/model/TrendSeries.h"

namespace kalvex::workbench {

// UTF-8 with its mark in front, line ends CR LF, fields parted by semicolons, a heading first. The
// time is local with its offset, "2024-03-31T03:00:00+02:00"; numbers have a decimal point; a point
// that has no value has an empty field there. Name and unit are engine texts.
std::string TrendCsv(std::span<const TrendPoint> points, bool isTime, std::string_view name,
                     std::string_view unit, const platform::Translator& translator);

}  // namespace kalvex::workbench
