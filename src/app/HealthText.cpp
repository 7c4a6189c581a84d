#include "app/HealthText.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "app/StandingText.h"
#include "engine/ScriptStanding.h"
#include "platform/FigureText.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex::app {

namespace {

using Samples = std::vector<platform::FigureSample>;

enum class Shown { Never, Always, UnlessZero };

struct FigureRow {
    platform::FigureForm form;
    Samples (*samples)(const HealthFigures& figures);
    Shown inStatus = Shown::Never;  // that the service manager shows
};

// A value that stands alone.
Samples Single(double value) {
    return {{"", "", "", value}};
}

Samples Single(std::uint64_t value) {
    return Single(static_cast<double>(value));
}

struct StateRow {
    std::size_t index;
    const char* label;
    const char* word;
    int number = 0;  // of a script's state as a figure
};

constexpr std::size_t IndexOf(ScriptCondition condition) {
    return static_cast<std::size_t>(condition);
}

constexpr StateRow kScriptStates[] = {
    {IndexOf(ScriptCondition::Running), "state=\"running\"", platform::Translatable("działa"), 1},
    {IndexOf(ScriptCondition::Waiting), "state=\"waiting\"",
     platform::Translatable("czeka na dane"), 2},
    {IndexOf(ScriptCondition::Error), "state=\"error\"", platform::Translatable("w błędzie"), 3},
    {IndexOf(ScriptCondition::Stopped), "state=\"stopped\"", platform::Translatable("zatrzymane"),
     4},
    {IndexOf(ScriptCondition::Finished), "state=\"finished\"", platform::Translatable("zakończone"),
     5},
    {IndexOf(ScriptCondition::Idle), "state=\"idle\"", platform::Translatable("nieuruchomione"), 0},
};

constexpr StateRow kConnectionStates[] = {
    {vantrel::StateConnected, "state=\"connected\"", platform::Translatable("połączone")},
    {vantrel::StateLogin, "state=\"login\"", platform::Translatable("logowanie")},
    {vantrel::StateOpening, "state=\"opening\"", platform::Translatable("łączenie")},
    {vantrel::StateDown, "state=\"down\"", platform::Translatable("rozłączone")},
};

template <class Rows, class Counts>
Samples ByState(const Rows& rows, const Counts& counts) {
    Samples samples;
    for (const StateRow& row : rows) {
        samples.push_back({"", row.label, row.word, static_cast<double>(counts[row.index])});
    }
    return samples;
}

Samples Lateness(const HealthFigures& figures) {
    return {{"", "quantile=\"0.5\"", "50%", figures.latenessHalf},
            {"", "quantile=\"0.99\"", "99%", figures.lateness99},
            {"_sum", "", nullptr, figures.latenessSum},
            {"_count", "", nullptr, static_cast<double>(figures.ticks)}};
}

constexpr double kMilli = 1000;
constexpr double kPerMega = 1e-6;

constexpr FigureRow kFigures[] = {
    {"kalvex_uptime_seconds",
     "gauge",
     "Time since the start.",
     {platform::Translatable("czas pracy"), 1, 0, " s"},
     [](const HealthFigures& f) { return Single(f.uptime); }},
    {"kalvex_ticks_total",
     "counter",
     "Ticks since the start.",
     {platform::Translatable("takty"), 1, 0, ""},
     [](const HealthFigures& f) { return Single(f.ticks); }},
    {"kalvex_ticks_per_second",
     "gauge",
     "Ticks a second over the last ten seconds.",
     {platform::Translatable("takty na sekundę"), 1, 1, ""},
     [](const HealthFigures& f) { return Single(f.ticksPerSecond); }},
    {"kalvex_tick_lateness_seconds",
     "summary",
     "How much later than due ticks began, since the start.",
     {platform::Translatable("spóźnienie taktów"), kMilli, 2, " ms"},
     Lateness},
    {"kalvex_tick_lateness_max_seconds",
     "gauge",
     "The latest tick since the start.",
     {platform::Translatable("największe spóźnienie taktu"), kMilli, 2, " ms"},
     [](const HealthFigures& f) { return Single(f.latenessMax); }},
    {"kalvex_lines_total",
     "counter",
     "Script lines run since the start, each try counted.",
     {platform::Translatable("wykonane wiersze"), 1, 0, ""},
     [](const HealthFigures& f) { return Single(f.counts.lines); }},
    {"kalvex_lines_per_second",
     "gauge",
     "Script lines a second over the last ten seconds.",
     {platform::Translatable("wiersze na sekundę"), 1, 1, ""},
     [](const HealthFigures& f) { return Single(f.linesPerSecond); }},
    {"kalvex_line_errors_total",
     "counter",
     "Script lines that failed, each try counted.",
     {platform::Translatable("wiersze z błędem"), 1, 0, ""},
     [](const HealthFigures& f) { return Single(f.counts.errors); }},
    {"kalvex_line_waits_total",
     "counter",
     "Script lines that waited for data, each try counted.",
     {platform::Translatable("wiersze czekające na dane"), 1, 0, ""},
     [](const HealthFigures& f) { return Single(f.counts.waits); }},
    {"kalvex_slow_lines_total",
     "counter",
     "Script lines that took over 100 ms.",
     {platform::Translatable("długie wiersze"), 1, 0, ""},
     [](const HealthFigures& f) { return Single(f.counts.slow); }},
    {"kalvex_scripts",
     "gauge",
     "Scripts by state.",
     {platform::Translatable("skrypty"), 1, 0, ""},
     [](const HealthFigures& f) { return ByState(kScriptStates, f.scripts); },
     Shown::Always},
    {"kalvex_connections",
     "gauge",
     "Connections to data servers by state.",
     {platform::Translatable("połączenia"), 1, 0, ""},
     [](const HealthFigures& f) { return ByState(kConnectionStates, f.connections); },
     Shown::Always},
    {"process_resident_memory_bytes",
     "gauge",
     "Physical memory that the process occupies.",
     {platform::Translatable("pamięć procesu"), kPerMega, 1, " MB"},
     [](const HealthFigures& f) { return Single(f.memory); }},
    {"kalvex_log_lines_lost_total",
     "counter",
     "Lines that could not be written to the file of the log.",
     {platform::Translatable("pominięte wiersze rejestru"), 1, 0, ""},
     [](const HealthFigures& f) { return Single(f.linesLost); },
     Shown::UnlessZero},
};

bool IsInStatus(const FigureRow& row, const HealthFigures& figures) {
    if (row.inStatus != Shown::UnlessZero) return row.inStatus == Shown::Always;
    return std::ranges::any_of(row.samples(figures), [](const platform::FigureSample& sample) {
        return sample.value != 0;
    });
}

// What each script has, under its name.
struct ScriptFigureRow {
    const char* name;
    const char* type;
    const char* help;
    double (*value)(const ScriptFigures& figures);
};

int NumberOf(ScriptCondition condition) {
    return std::ranges::find(kScriptStates, IndexOf(condition), &StateRow::index)->number;
}

constexpr ScriptFigureRow kScriptFigures[] = {
    {"kalvex_script_state", "gauge",
     "State of a script: 0 idle, 1 running, 2 waiting, 3 error, 4 stopped, 5 finished.",
     [](const ScriptFigures& f) { return static_cast<double>(NumberOf(f.condition)); }},
    {"kalvex_script_line", "gauge",
     "Line on which a script stands, from 1; 0 of one that is idle or finished.",
     [](const ScriptFigures& f) { return static_cast<double>(f.line); }},
    {"kalvex_script_error_code", "gauge", "Code of the error on which a script stands, 0 for none.",
     [](const ScriptFigures& f) { return static_cast<double>(f.error); }},
    {"kalvex_script_standing_seconds", "gauge",
     "Time since a line of a script finished; 0 of one that is idle or finished.",
     [](const ScriptFigures& f) { return f.standing; }},
    {"kalvex_script_lines_total", "counter", "Lines of a script run, each try counted.",
     [](const ScriptFigures& f) { return static_cast<double>(f.counts.lines); }},
    {"kalvex_script_line_errors_total", "counter",
     "Lines of a script that failed, each try counted.",
     [](const ScriptFigures& f) { return static_cast<double>(f.counts.errors); }},
    {"kalvex_script_slow_lines_total", "counter", "Lines of a script that took over 100 ms.",
     [](const ScriptFigures& f) { return static_cast<double>(f.counts.slow); }},
};

// The value of a label, UTF-8.
std::string EscapeLabel(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '"') escaped += '\\';
        if (c == '\n') {
            escaped += "\\n";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string FormatScriptMetrics(const std::vector<ScriptFigures>& scripts) {
    std::vector<std::string> names;
    for (const ScriptFigures& script : scripts) {
        names.push_back(EscapeLabel(text::ToUtf8(script.name)));
    }
    std::string text;
    for (const ScriptFigureRow& row : kScriptFigures) {
        text += platform::FigureHead(row.name, row.help, row.type);
        for (std::size_t i = 0; i < scripts.size(); ++i) {
            text +=
                fmt::format("{}{{script=\"{}\"}} {}\n", row.name, names[i], row.value(scripts[i]));
        }
    }
    return text;
}

}  // namespace

std::vector<std::string> FormatHealthLines(const HealthFigures& figures,
                                           const platform::Translator& translator) {
    const std::string beginning = translator.Translate("Stan modułu, ");
    std::vector<std::string> lines;
    for (const FigureRow& row : kFigures) {
        lines.push_back(beginning +
                        platform::FigureLine(row.form, row.samples(figures), translator));
    }
    return lines;
}

std::vector<std::string> FormatHeldScripts(const engine::TickRunner& ticks,
                                           const platform::Translator& translator) {
    std::vector<std::string> lines;
    for (const engine::TickedScript& ticked : ticks.Scripts()) {
        engine::CKalvexDoc& script = *ticked.document;
        const ScriptCondition condition = ConditionOf(script);
        const bool held =
            condition == ScriptCondition::Error || condition == ScriptCondition::Waiting;
        if (!held) continue;
        lines.push_back(text::FormatText(
            translator.Translate("Stan modułu, skrypt %s: %s"),
            {script.GetDocKey(), FormatStandingStatus(engine::GetStanding(script), translator)}));
    }
    return lines;
}

void LogHealth(platform::LogSink& log, const HealthFigures& figures,
               const engine::TickRunner& ticks, const platform::Translator& translator) {
    for (const std::string& line : FormatHealthLines(figures, translator)) {
        log.Log(line, platform::LogAlways);
    }
    for (const std::string& line : FormatHeldScripts(ticks, translator)) {
        log.Log(line, platform::LogAlways);
    }
}

std::string FormatHealthStatus(const HealthFigures& figures,
                               const platform::Translator& translator) {
    std::string status;
    for (const FigureRow& row : kFigures) {
        if (!IsInStatus(row, figures)) continue;
        status += (status.empty() ? "" : "; ") +
                  platform::FigureLine(row.form, row.samples(figures), translator);
    }
    return status;
}

std::string FormatHealthMetrics(const HealthFigures& figures) {
    std::string text;
    for (const FigureRow& row : kFigures) {
        text += platform::FigureMetric(row.form, row.samples(figures));
    }
    return figures.byScript.empty() ? text : text + FormatScriptMetrics(figures.byScript);
}

}  // namespace kalvex::app
