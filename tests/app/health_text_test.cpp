#include "app/HealthText.h"

#include <gmock/gmock.h>

#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;

HealthFigures SomeFigures() {
    HealthFigures figures;
    figures.uptime = 3600.4;
    figures.ticks = 3'595'012;
    figures.ticksPerSecond = 998.75;
    figures.latenessHalf = 0.000012;
    figures.lateness99 = 0.0025;
    figures.latenessMax = 0.75;
    figures.latenessSum = 41.5;
    figures.counts = {250'000, 12, 7, 3};
    figures.linesPerSecond = 69.44;
    figures.scripts = {1, 2, 3, 4, 5, 6};  // error, stopped, idle, finished, waiting, running
    figures.connections = {1, 2, 3, 4};    // down, opening, login, connected
    figures.memory = 18'350'080;
    figures.linesLost = 8;
    return figures;
}

TEST(HealthTextTest, LogHasALineForEachFigure) {
    std::vector<std::string> lines;
    for (const std::string& line : FormatHealthLines(SomeFigures(), platform::Translator())) {
        lines.push_back(text::ToUtf8(line));
    }
    EXPECT_THAT(
        lines,
        ElementsAre("Stan modułu, czas pracy: 3600 s", "Stan modułu, takty: 3595012",
                    "Stan modułu, takty na sekundę: 998.8",
                    "Stan modułu, spóźnienie taktów: 50% 0.01 ms, 99% 2.50 ms",
                    "Stan modułu, największe spóźnienie taktu: 750.00 ms",
                    "Stan modułu, wykonane wiersze: 250000",
                    "Stan modułu, wiersze na sekundę: 69.4", "Stan modułu, wiersze z błędem: 12",
                    "Stan modułu, wiersze czekające na dane: 7", "Stan modułu, długie wiersze: 3",
                    "Stan modułu, skrypty: działa 6, czeka na dane 5, w błędzie 1, zatrzymane 2, "
                    "zakończone 4, nieuruchomione 3",
                    "Stan modułu, połączenia: połączone 4, logowanie 3, łączenie 2, rozłączone 1",
                    "Stan modułu, pamięć procesu: 18.4 MB",
                    "Stan modułu, pominięte wiersze rejestru: 8"));
}

TEST(HealthTextTest, StatusTellsOfScriptsAndConnections) {
    HealthFigures figures = SomeFigures();
    figures.linesLost = 0;
    const std::string status =
        "skrypty: działa 6, czeka na dane 5, w błędzie 1, zatrzymane 2, zakończone 4, "
        "nieuruchomione 3; połączenia: połączone 4, logowanie 3, łączenie 2, rozłączone 1";
    EXPECT_EQ(text::ToUtf8(FormatHealthStatus(figures, platform::Translator())), status);
    figures.linesLost = 1;
    EXPECT_EQ(text::ToUtf8(FormatHealthStatus(figures, platform::Translator())),
              status + "; pominięte wiersze rejestru: 1");
}

TEST(HealthTextTest, MetricsFollowTheTextExpositionFormat) {
    EXPECT_EQ(FormatHealthMetrics(SomeFigures()),
              R"(# HELP kalvex_uptime_seconds Time since the start.
# TYPE kalvex_uptime_seconds gauge
kalvex_uptime_seconds 3600.4
# HELP kalvex_ticks_total Ticks since the start.
# TYPE kalvex_ticks_total counter
kalvex_ticks_total 3595012
# HELP kalvex_ticks_per_second Ticks a second over the last ten seconds.
# TYPE kalvex_ticks_per_second gauge
kalvex_ticks_per_second 998.75
# HELP kalvex_tick_lateness_seconds How much later than due ticks began, since the start.
# TYPE kalvex_tick_lateness_seconds summary
kalvex_tick_lateness_seconds{quantile="0.5"} 1.2e-05
kalvex_tick_lateness_seconds{quantile="0.99"} 0.0025
kalvex_tick_lateness_seconds_sum 41.5
kalvex_tick_lateness_seconds_count 3595012
# HELP kalvex_tick_lateness_max_seconds The latest tick since the start.
# TYPE kalvex_tick_lateness_max_seconds gauge
kalvex_tick_lateness_max_seconds 0.75
# HELP kalvex_lines_total Script lines run since the start, each try counted.
# TYPE kalvex_lines_total counter
kalvex_lines_total 250000
# HELP kalvex_lines_per_second Script lines a second over the last ten seconds.
# TYPE kalvex_lines_per_second gauge
kalvex_lines_per_second 69.44
# HELP kalvex_line_errors_total Script lines that failed, each try counted.
# TYPE kalvex_line_errors_total counter
kalvex_line_errors_total 12
# HELP kalvex_line_waits_total Script lines that waited for data, each try counted.
# TYPE kalvex_line_waits_total counter
kalvex_line_waits_total 7
# HELP kalvex_slow_lines_total Script lines that took over 100 ms.
# TYPE kalvex_slow_lines_total counter
kalvex_slow_lines_total 3
# HELP kalvex_scripts Scripts by state.
# TYPE kalvex_scripts gauge
kalvex_scripts{state="running"} 6
kalvex_scripts{state="waiting"} 5
kalvex_scripts{state="error"} 1
kalvex_scripts{state="stopped"} 2
kalvex_scripts{state="finished"} 4
kalvex_scripts{state="idle"} 3
# HELP kalvex_connections Connections to data servers by state.
# TYPE kalvex_connections gauge
kalvex_connections{state="connected"} 4
kalvex_connections{state="login"} 3
kalvex_connections{state="opening"} 2
kalvex_connections{state="down"} 1
# HELP process_resident_memory_bytes Physical memory that the process occupies.
# TYPE process_resident_memory_bytes gauge
process_resident_memory_bytes 18350080
# HELP kalvex_log_lines_lost_total Lines that could not be written to the file of the log.
# TYPE kalvex_log_lines_lost_total counter
kalvex_log_lines_lost_total 8
)");
}

std::string ScriptMetrics(std::vector<ScriptFigures> scripts) {
    HealthFigures figures = SomeFigures();
    const std::string before = FormatHealthMetrics(figures);
    figures.byScript = std::move(scripts);
    const std::string text = FormatHealthMetrics(figures);
    EXPECT_EQ(text.substr(0, before.size()), before);
    return text.substr(before.size());
}

TEST(HealthTextTest, MetricsOfScriptsBearTheirNames) {
    EXPECT_EQ(
        ScriptMetrics({{.name = "a.kx",
                        .condition = ScriptCondition::Error,
                        .line = 2,
                        .error = 3,
                        .standing = 12,
                        .counts = {100, 90, 4, 2}},
                       {.name = text::FromUtf8("kotły/b.kx"),
                        .condition = ScriptCondition::Finished,
                        .counts = {7, 0, 0, 0}}}),
        R"(# HELP kalvex_script_state State of a script: 0 idle, 1 running, 2 waiting, 3 error, 4 stopped, 5 finished.
# TYPE kalvex_script_state gauge
kalvex_script_state{script="a.kx"} 3
kalvex_script_state{script="kotły/b.kx"} 5
# HELP kalvex_script_line Line on which a script stands, from 1; 0 of one that is idle or finished.
# TYPE kalvex_script_line gauge
kalvex_script_line{script="a.kx"} 2
kalvex_script_line{script="kotły/b.kx"} 0
# HELP kalvex_script_error_code Code of the error on which a script stands, 0 for none.
# TYPE kalvex_script_error_code gauge
kalvex_script_error_code{script="a.kx"} 3
kalvex_script_error_code{script="kotły/b.kx"} 0
# HELP kalvex_script_standing_seconds Time since a line of a script finished; 0 of one that is idle or finished.
# TYPE kalvex_script_standing_seconds gauge
kalvex_script_standing_seconds{script="a.kx"} 12
kalvex_script_standing_seconds{script="kotły/b.kx"} 0
# HELP kalvex_script_lines_total Lines of a script run, each try counted.
# TYPE kalvex_script_lines_total counter
kalvex_script_lines_total{script="a.kx"} 100
kalvex_script_lines_total{script="kotły/b.kx"} 7
# HELP kalvex_script_line_errors_total Lines of a script that failed, each try counted.
# TYPE kalvex_script_line_errors_total counter
kalvex_script_line_errors_total{script="a.kx"} 90
kalvex_script_line_errors_total{script="kotły/b.kx"} 0
# HELP kalvex_script_slow_lines_total Lines of a script that took over 100 ms.
# TYPE kalvex_script_slow_lines_total counter
kalvex_script_slow_lines_total{script="a.kx"} 2
kalvex_script_slow_lines_total{script="kotły/b.kx"} 0
)");
}

TEST(HealthTextTest, EachStateOfAScriptHasItsNumber) {
    // Error, stopped, idle, finished, waiting, running.
    const std::vector<std::string> numbers = {"3", "4", "0", "5", "2", "1"};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::string text = ScriptMetrics(
            {{.name = "a", .condition = static_cast<ScriptCondition>(i), .counts = {}}});
        const std::string row = "kalvex_script_state{script=\"a\"} ";
        EXPECT_EQ(text.substr(text.find(row) + row.size(), 2), numbers[i] + "\n");
    }
}

TEST(HealthTextTest, NameOfAScriptIsEscaped) {
    const std::string text = ScriptMetrics({{.name = "a\\b\"c\nd", .counts = {}}});
    const std::string row = "kalvex_script_state";
    EXPECT_EQ(text.substr(text.find(row + "{"), 42),
              "kalvex_script_state{script=\"a\\\\b\\\"c\\nd\"} 0");
}

}  // namespace
}  // namespace kalvex::app
