// Schedule entries, from their text and prepared, and time properties. A row counts its answers and
// compares them with the number worked out from the calendar; the program fails when one differs.

#include <cstdio>
#include <iterator>
#include <string_view>

#include "checked_rows.h"
#include "operands/Schedule.h"
#include "operands/TimeProperties.h"
#include "support/zone_scope.h"
#include "value/LocalTime.h"

namespace kalvex::bench {
namespace {

// Monday 2024-03-11 00:00:00 in Warsaw, an hour ahead of GMT.
constexpr std::int64_t kMonday = 1710111600;
constexpr std::int64_t kDay = 86400;

void Expect(std::int64_t got, std::int64_t wanted, const char* row) {
    if (got == wanted) return;
    std::fprintf(stderr, "%s: %lld instead of %lld\n", row, static_cast<long long>(got),
                 static_cast<long long>(wanted));
    g_wrong = true;
}

struct Question {
    const char* entry;
    int fitsOfADay;  // among the minutes of that Monday
};

constexpr Question kQuestions[] = {
    {"* * * * * *", 1440},          {"0 0 12 * * *", 1}, {"0 30 6 * * Mon-Fri", 1}, {"@hourly", 24},
    {"0 */15 6-17 1-31/2 * *", 48}, {"0 0 0 13 * 5", 0},
};

void MatchText(benchmark::State& state) {
    const Question& question = kQuestions[state.range(0)];
    std::int64_t days = 0;
    std::int64_t fits = 0;
    for (auto _ : state) {
        for (int minute = 0; minute < 1440; ++minute) {
            fits += operands::CheckEventTime(question.entry, 0, 0, kMonday + minute * 60);
        }
        ++days;
    }
    Expect(fits, days * question.fitsOfADay, question.entry);
    state.SetItemsProcessed(days * 1440);
    state.SetLabel(question.entry);
}
BENCHMARK(MatchText)->DenseRange(0, std::size(kQuestions) - 1);

void MatchPrepared(benchmark::State& state) {
    const Question& question = kQuestions[state.range(0)];
    operands::ScheduleEntry entry;
    Expect(operands::ReadScheduleEntry(question.entry, entry), 1, question.entry);
    std::int64_t days = 0;
    std::int64_t fits = 0;
    for (auto _ : state) {
        for (int minute = 0; minute < 1440; ++minute) {
            fits += operands::FitsSchedule(entry, kMonday + minute * 60);
        }
        ++days;
    }
    Expect(fits, days * question.fitsOfADay, question.entry);
    state.SetItemsProcessed(days * 1440);
    state.SetLabel(question.entry);
}
BENCHMARK(MatchPrepared)->DenseRange(0, std::size(kQuestions) - 1);

// An entry that fits just behind the tolerance, asked as one question.
void Tolerance(benchmark::State& state) {
    const auto seconds = static_cast<std::int32_t>(state.range(0));
    const std::int64_t now = kMonday + kDay - seconds;
    std::int64_t fits = 0;
    for (auto _ : state) fits += operands::CheckEventTime("0 0 0 12 Mar *", seconds, 0, now);
    Expect(fits, 0, "Tolerance");
    Expect(operands::CheckEventTime("0 0 0 12 Mar *", seconds + 1, 0, now), 1,
           "Tolerance and a second");
}
BENCHMARK(Tolerance)->Arg(5)->Arg(3600)->Arg(86400);

// The same asked second by second, each with its own reading of the entry.
void ToleranceBySeconds(benchmark::State& state) {
    const std::int64_t now = kMonday + kDay - state.range(0);
    std::int64_t fits = 0;
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            fits += operands::CheckEventTime("0 0 0 12 Mar *", 0, 0, now + i);
        }
    }
    Expect(fits, 0, "ToleranceBySeconds");
}
BENCHMARK(ToleranceBySeconds)->Arg(5)->Arg(3600);

struct Computation {
    const char* property;
    std::int64_t value;  // at 2024-03-11 06:30:15
};

constexpr Computation kComputations[] = {
    {".HOUR", 6},
    {".HOUR.MIN.SEC", 23415},
    {".GMTHOUR", 5},
    {".WINTERHOUR", 6},
    {".FIRSTLOCALHOUR", kMonday + 6 * 3600},
    {".FIRSTLOCALDAY", kMonday},
    {".LASTLOCALMONTH", 1711922399},
    {".NEXTDAY", kMonday + kDay + 23415},
    {".NEXTLOCALMONTH", 1712809815},
};

void Property(benchmark::State& state) {
    const Computation& row = kComputations[state.range(0)];
    std::int64_t value = 0;
    for (auto _ : state) {
        const operands::TimeProperty* property = operands::FindTimeProperty(row.property);
        benchmark::DoNotOptimize(value = property->compute(kMonday + 23415));
    }
    Expect(value, row.value, row.property);
    state.SetLabel(row.property);
}
BENCHMARK(Property)->DenseRange(0, std::size(kComputations) - 1);

struct Mention {
    const char* text;
    bool mentioned;
};

constexpr Mention kMentions[] = {
    {"PRZEPLYW_GODZINOWY_12", false}, {"3.14", false},        {"A.HREP", false},
    {"TIME.DAYOFWEEK", true},         {"X.WINTERYEAR", true},
};

void Mentions(benchmark::State& state) {
    const Mention& row = kMentions[state.range(0)];
    const std::string_view text = row.text;
    std::int64_t mentioned = 0;
    std::int64_t rounds = 0;
    for (auto _ : state) {
        mentioned += operands::MentionsTimeProperty(text);
        ++rounds;
    }
    Expect(mentioned, row.mentioned ? rounds : 0, row.text);
    state.SetLabel(row.text);
}
BENCHMARK(Mentions)->DenseRange(0, std::size(kMentions) - 1);

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    const kalvex::support::ZoneScope zone("Europe/Warsaw");
    return kalvex::bench::RunRows(argc, argv);
}
