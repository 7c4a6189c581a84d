// The figures of a module's health as texts: one table of figures, two forms. Any thread.
#pragma once

#include <string>
#include <vector>

#include "app/Health.h"
#include "platform/Translator.h"

namespace kalvex::app {

// A line a figure, for the log; engine texts.
std::vector<std::string> FormatHealthLines(const HealthFigures& figures,
                                           const platform::Translator& translator);

// Scripts and connections in one line, for a service manager; an engine text.
std::string FormatHealthStatus(const HealthFigures& figures,
                               const platform::Translator& translator);

// The text exposition format 0.0.4 of Prometheus, UTF-8.
std::string FormatHealthMetrics(const HealthFigures& figures);

}  // namespace kalvex::app
