// Scenarios by their seeds, each run both ways; a seed at which they differ is told, with the
// scenario that is left of it when all is gone that the difference does not need.
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "differential/Coverage.h"
#include "differential/Generator.h"
#include "differential/Lockstep.h"
#include "support/zone_scope.h"

namespace kalvex::differential {
namespace {

constexpr const char* kUsage =
    "usage: differential [--seed N] [--scripts N] [--ticks N] [--differences N] [--show]\n"
    "                    [--coverage] [--digests]\n"
    "Runs the scripts of so many seeds from N on, each for so many ticks at most, with kept forms\n"
    "and read anew. Ends at so many differences, 1 unless told. --show prints each scenario,\n"
    "--coverage how often each row of the language has run, --digests a number for each seed that "
    "is\n"
    "another one where another version of the program does something else.\n";

struct Options {
    std::uint64_t seed = 1;
    std::uint64_t scripts = 1000;
    std::uint64_t ticks = 300;
    std::uint64_t differences = 1;
    bool show = false;
    bool coverage = false;
    bool digests = false;
};

struct NumberOption {
    std::string_view name;
    std::uint64_t Options::*member;
};

constexpr NumberOption kNumbers[] = {
    {"--seed", &Options::seed},
    {"--scripts", &Options::scripts},
    {"--ticks", &Options::ticks},
    {"--differences", &Options::differences},
};

struct Switch {
    std::string_view name;
    bool Options::*member;
};

constexpr Switch kSwitches[] = {{"--show", &Options::show},
                                {"--coverage", &Options::coverage},
                                {"--digests", &Options::digests}};

bool ReadNumber(std::string_view text, std::uint64_t& number) {
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
    return code == std::errc() && end == text.data() + text.size();
}

bool ReadOption(Options& options, char**& argument) {
    const std::string_view name = *argument++;
    for (const Switch& row : kSwitches) {
        if (row.name == name) return options.*row.member = true;
    }
    for (const NumberOption& row : kNumbers) {
        if (row.name == name && *argument != nullptr)
            return ReadNumber(*argument++, options.*row.member);
    }
    return false;
}

bool ReadOptions(char** argument, Options& options) {
    while (*argument != nullptr) {
        if (!ReadOption(options, argument)) return false;
    }
    return true;
}

void Tell(const support::ScratchFolder& folder, std::uint64_t seed, const Scenario& scenario,
          const Verdict& verdict) {
    std::printf("seed %llu, tick %d: %s\n", static_cast<unsigned long long>(seed), verdict.tick,
                verdict.difference.c_str());
    const Scenario smaller = Minimise(folder, scenario, CountedLanguage());
    const Verdict again = RunBothWays(folder, smaller, CountedLanguage());
    std::printf("minimised, tick %d: %s\n%s\n", again.tick, again.difference.c_str(),
                Describe(smaller).c_str());
    std::fflush(stdout);
}

void PrintCoverage(const std::map<std::string_view, OutcomeCounts>& rows) {
    for (const auto& [name, counts] : rows) {
        std::printf("%-26.*s %10llu finished %10llu stayed %10llu failed\n",
                    static_cast<int>(name.size()), name.data(),
                    static_cast<unsigned long long>(counts.finished),
                    static_cast<unsigned long long>(counts.stayed),
                    static_cast<unsigned long long>(counts.failed));
    }
}

void PrintCoverage() {
    std::puts("statements");
    PrintCoverage(Covered().statements);
    std::puts("functions");
    PrintCoverage(Covered().functions);
    std::puts("errors");
    for (std::size_t code = 0; code < Covered().errors.size(); ++code) {
        if (Covered().errors[code] == 0) continue;
        std::printf("%3zu %10llu\n", code, static_cast<unsigned long long>(Covered().errors[code]));
    }
}

int Run(const Options& options) {
    const support::ZoneScope zone("Europe/Warsaw");
    const support::ScratchFolder folder;
    std::uint64_t differences = 0;
    std::uint64_t lines = 0;
    std::uint64_t seed = options.seed;
    for (; seed < options.seed + options.scripts && differences < options.differences; ++seed) {
        const Scenario scenario = MakeScenario(seed, static_cast<int>(options.ticks));
        if (options.show)
            std::printf("seed %llu\n%s", static_cast<unsigned long long>(seed),
                        Describe(scenario).c_str());
        const Verdict verdict = RunBothWays(folder, scenario, CountedLanguage());
        lines += verdict.lines;
        if (options.digests) {
            std::printf("%llu %016llx\n", static_cast<unsigned long long>(seed),
                        static_cast<unsigned long long>(verdict.digest));
        }
        if (verdict.difference.empty()) continue;
        ++differences;
        Tell(folder, seed, scenario, verdict);
    }
    if (options.coverage) PrintCoverage();
    std::printf("%llu scripts, %llu lines, %llu differences\n",
                static_cast<unsigned long long>(seed - options.seed),
                static_cast<unsigned long long>(lines),
                static_cast<unsigned long long>(differences));
    return differences == 0 ? 0 : 1;
}

}  // namespace
}  // namespace kalvex::differential

int main(int, char** argv) {
    kalvex::differential::Options options;
    if (!kalvex::differential::ReadOptions(argv + 1, options)) {
        std::fputs(kalvex::differential::kUsage, stderr);
        return 2;
    }
    return kalvex::differential::Run(options);
}
