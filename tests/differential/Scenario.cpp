#include "differential/Scenario.h"

#include <array>

#include "text/CodePage.h"

namespace kalvex::differential {

namespace {

constexpr std::array<const char*, static_cast<std::size_t>(EventKind::Count)> kEventNames = {
    "start",     "stop",      "step",        "reset",       "minimise", "breakpoint",
    "set value", "edit line", "insert line", "change file", "jump",     "idle ticks",
};

std::string Numbered(const std::string& text) {
    std::string result;
    int number = 0;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        result += std::to_string(++number) + '\t' + text.substr(start, end - start) + '\n';
        start = end + 1;
    }
    return result;
}

std::string Describe(const Event& event) {
    return "tick " + std::to_string(event.tick) + ": script " + std::to_string(event.script) + " " +
           kEventNames.at(static_cast<std::size_t>(event.kind)) + " " +
           std::to_string(event.number) + " " + event.text + "\n";
}

}  // namespace

std::string FileName(std::size_t script) {
    return "skrypt" + std::to_string(script) + ".kx";
}

std::string Describe(const Scenario& scenario) {
    std::string text;
    for (std::size_t i = 0; i < scenario.scripts.size(); ++i) {
        text += "--- " + FileName(i) + "\n" + Numbered(scenario.scripts[i]);
    }
    if (!scenario.included.empty()) text += "--- dolaczony.kx\n" + Numbered(scenario.included);
    text += "--- ";
    text += scenario.sources ? "sources, " : "";
    text += scenario.started ? "started, " : "by steps, ";
    text += scenario.stepwise ? "compared after each step, " : "";
    text += scenario.watched ? "watched, " : "";
    text += scenario.published ? "published, " : "";
    text += "patience " + std::to_string(scenario.patience) + ", ticks " +
            std::to_string(scenario.ticks) + ", ms";
    for (const std::int64_t length : scenario.tickLengths) text += " " + std::to_string(length);
    text += '\n';
    for (const Event& event : scenario.events) text += Describe(event);
    return text::ToUtf8(text);
}

}  // namespace kalvex::differential
