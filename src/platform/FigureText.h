// Figures of a process as texts: lines of its log, and the text exposition format 0.0.4 of
// Prometheus. Any thread.
#pragma once

#include <string>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::platform {

inline constexpr const char* kFigureContentType = "text/plain; version=0.0.4; charset=utf-8";

struct FigureSample {
    const char* suffix;  // of the figure's name
    const char* label;   // "" for none
    const char* word;    // before the value in the log; "" for none, null: the log leaves it out
    double value;
};

struct FigureLogForm {
    const char* text;
    double scale;  // from the unit of the figure to that of the log
    int decimals;
    const char* unit;
};

struct FigureForm {
    const char* name;
    const char* type;
    const char* help;
    FigureLogForm log;
};

// "Takty: 5", in the language of the log; an engine text.
std::string FigureLine(const FigureForm& form, const std::vector<FigureSample>& samples,
                       const Translator& translator);

// What stands above the samples of a figure, and both; UTF-8.
std::string FigureHead(const char* name, const char* help, const char* type);
std::string FigureMetric(const FigureForm& form, const std::vector<FigureSample>& samples);

}  // namespace kalvex::platform
