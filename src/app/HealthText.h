// The figures of a module's health as texts: one table of figures, two forms. Any thread.
#pragma once

#include <string>
#include <vector>

#include "app/Health.h"
#include "platform/LogSink.h"
#include "platform/Translator.h"

namespace kalvex::app {

// A line a figure, for the log; engine texts.
std::vector<std::string> FormatHealthLines(const HealthFigures& figures,
                                           const platform::Translator& translator);

// A line for each script that stands on an error or waits for data: where, since when and why;
// engine texts.
std::vector<std::string> FormatHeldScripts(const engine::TickRunner& ticks,
                                           const platform::Translator& translator);

// Both, whatever the level of the log.
void LogHealth(platform::LogSink& log, const HealthFigures& figures,
               const engine::TickRunner& ticks, const platform::Translator& translator);

// Scripts and connections in one line, for a service manager; an engine text.
std::string FormatHealthStatus(const HealthFigures& figures,
                               const platform::Translator& translator);

// The text exposition format 0.0.4 of Prometheus, UTF-8.
std::string FormatHealthMetrics(const HealthFigures& figures);

}  // namespace kalvex::app
