#include "platform/FigureText.h"

#include <fmt/format.h>

namespace kalvex::platform {

std::string FigureLine(const FigureForm& form, const std::vector<FigureSample>& samples,
                       const Translator& translator) {
    std::string line = translator.Translate(form.log.text);
    const char* separator = ": ";
    for (const FigureSample& sample : samples) {
        if (sample.word == nullptr) continue;
        line += separator;
        separator = ", ";
        if (*sample.word != '\0') line += translator.Translate(sample.word) + ' ';
        line += fmt::format("{:.{}f}{}", sample.value * form.log.scale, form.log.decimals,
                            form.log.unit);
    }
    return line;
}

std::string FigureHead(const char* name, const char* help, const char* type) {
    return fmt::format("# HELP {0} {1}\n# TYPE {0} {2}\n", name, help, type);
}

std::string FigureMetric(const FigureForm& form, const std::vector<FigureSample>& samples) {
    std::string text = FigureHead(form.name, form.help, form.type);
    for (const FigureSample& sample : samples) {
        const std::string label = *sample.label == '\0' ? "" : fmt::format("{{{}}}", sample.label);
        text += fmt::format("{}{}{} {}\n", form.name, sample.suffix, label, sample.value);
    }
    return text;
}

}  // namespace kalvex::platform
