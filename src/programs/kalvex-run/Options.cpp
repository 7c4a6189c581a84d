#include "programs/kalvex-run/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "programs/ExitStatus.h"
#include "text/CodePage.h"
#include "text/WholeNumber.h"
#include "value/LocalTimeText.h"

namespace kalvex::run {

namespace {

constexpr std::int64_t kTicksOfVirtualRun = 1000000;
constexpr std::int64_t kGreatestTickMs = 86400000;

constexpr const char* kTimeForm = "\"YYYY-MM-DD HH:MM:SS\"";
constexpr const char* kScript = "SCRIPT";
constexpr const char* kPurpose =
    "Runs Kalvex scripts, against the real clock or a virtual one, and prints what happened.";
constexpr const char* kExitStatuses =
    "Exit status: 0 every script finished, or --until came; 1 a script stopped or stands\n"
    "on an error; 2 wrong usage, a file that cannot be read or is not valid, a start that\n"
    "was refused, or an action that could not be carried out; 3 the tick limit came first.";

class UsageFormatter final : public CLI::Formatter {
  public:
    UsageFormatter() { column_width(32); }
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: kalvex-run [OPTIONS] SCRIPT.kx [SCRIPT.kx ...]\n"
               "       kalvex-run --test [--junit FILE] SCRIPT.kx|FOLDER ...\n"
               "       kalvex-run --language [WORD]\n";
    }
    std::string make_positionals(const CLI::App*) const override { return {}; }
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_size() == 0 ? "" : " " + option->get_type_name();
    }
};

std::string ReadNumber(const std::string& text, std::int64_t least, std::int64_t greatest,
                       std::int64_t& out) {
    const auto number = text::ReadWholeNumber<std::int64_t>(text);
    if (number && *number >= least && *number <= greatest) {
        out = *number;
        return {};
    }
    const std::string range = greatest == INT64_MAX ? fmt::format("of at least {}", least)
                                                    : fmt::format("from {} to {}", least, greatest);
    return fmt::format("\"{}\" is not a whole number {}", text, range);
}

std::string TakeTickMs(RunOptions& options, const std::string& text) {
    return ReadNumber(text, 1, kGreatestTickMs, options.tickMs);
}

template <auto Member, std::int64_t Greatest>
std::string TakeNumber(RunOptions& options, const std::string& text) {
    std::int64_t number = 0;
    std::string fault = ReadNumber(text, 0, Greatest, number);
    if (fault.empty()) options.*Member = number;
    return fault;
}

template <std::optional<std::int64_t> RunOptions::*Member>
std::string TakeTime(RunOptions& options, const std::string& text) {
    options.*Member = value::ParseLocalTime(text);
    if (options.*Member) return {};
    return fmt::format("\"{}\" is not a time {}", text, kTimeForm);
}

std::string TakeUser(RunOptions& options, const std::string& text) {
    const std::size_t colon = text.find(':');
    options.userName = text::FromUtf8(text.substr(0, colon));
    if (colon != std::string::npos)
        options.userDescription = text::FromUtf8(text.substr(colon + 1));
    return options.userName.empty() ? fmt::format("\"{}\" names nobody", text) : std::string();
}

template <std::optional<std::string> RunOptions::*Member>
std::string TakeText(RunOptions& options, const std::string& text) {
    options.*Member = text;
    return {};
}

template <bool RunOptions::*Member>
std::string TakeFlag(RunOptions& options, const std::string&) {
    options.*Member = true;
    return {};
}

struct OptionRow {
    const char* name;
    const char* value;  // as the help shows it; null for an option without one
    const char* help;
    // Tells what is wrong with the text, if anything.
    std::string (*take)(RunOptions& options, const std::string& text);
    bool ofTests = false;  // one of those that --test can do with
};

constexpr OptionRow kOptions[] = {
    {"--clock", kTimeForm, "Virtual local time at the first tick; nothing waits then",
     TakeTime<&RunOptions::clock>},
    {"--tick-ms", "N", "Milliseconds of virtual time per tick (default 1)", TakeTickMs},
    {"--ticks", "N",
     "Stop after N ticks (1000000 with --clock and without --until, else without end)",
     TakeNumber<&RunOptions::ticks, INT64_MAX>},
    {"--until", kTimeForm, "End when the clock reads this local time; that is no limit",
     TakeTime<&RunOptions::until>},
    {"--minimised", nullptr, "Run every script as if its window were minimised",
     TakeFlag<&RunOptions::minimised>},
    {"--plant", "FILE", "Simulated data servers, or the .toml of a real one",
     TakeText<&RunOptions::plant>},
    {"--actions", "FILE", "Operator actions at given ticks", TakeText<&RunOptions::actions>},
    {"--user", "NAME[:DESCRIPTION]", "The user who is logged in", TakeUser},
    {"--log-level", "N",
     "Log: 0 always, 1 errors, 2 events, 3 transmission (default: of the profile, or 1)",
     TakeNumber<&RunOptions::logLevel, 3>},
    {"--json", nullptr, "Print the result as one JSON object and nothing else",
     TakeFlag<&RunOptions::json>},
    {"--lines", nullptr, "Add each script's text after preparation to the JSON",
     TakeFlag<&RunOptions::lines>},
    {"--profile", "FILE", "Profile to read sources and settings from",
     TakeText<&RunOptions::profile>},
    {"--test", nullptr, "Run scripts that carry expectations, also all of folders",
     TakeFlag<&RunOptions::test>, true},
    {"--junit", "FILE", "With --test: write what came of it as JUnit XML too",
     TakeText<&RunOptions::junit>, true},
    {"--language", "[WORD]", "Print what a word of the language means, or all words, and exit",
     TakeText<&RunOptions::language>},
};

constexpr OptionRow kHelp = {"--help", nullptr, "Print this and exit", nullptr};
constexpr const char* kHelpLetter = "-h";
constexpr OptionRow kVersion = {"--version", nullptr, "Print the version and exit", nullptr};
constexpr const char* kVersionLetter = "-V";

void Add(CLI::App& app, const OptionRow& row, RunOptions& options) {
    if (row.value == nullptr) {
        app.add_flag_callback(
            row.name, [&row, &options] { row.take(options, {}); }, row.help);
        return;
    }
    const auto take = [&row, &options](const std::string& text) {
        const std::string fault = row.take(options, text);
        if (!fault.empty()) throw CLI::ValidationError(row.name, fault);
    };
    CLI::Option* const option = app.add_option_function<std::string>(row.name, take, row.help);
    option->type_name(row.value)->take_last();
    if (*row.value == '[') option->expected(0, 1);
}

// The library counts the sign that ends the options among what it does not know.
std::string FirstUnknown(const CLI::App& app) {
    for (const std::string& argument : app.remaining()) {
        if (argument != "--") return argument;
    }
    return {};
}

// What does not go together.
std::string FindConflict(const CLI::App& app, const RunOptions& options) {
    if (options.junit && !options.test) return "--junit goes with --test";
    for (const OptionRow& row : kOptions) {
        if (!options.test || row.ofTests || app.count(row.name) == 0) continue;
        return fmt::format("--test takes no {}: a script names its own behind \";; run:\"",
                           row.name);
    }
    return {};
}

CommandLine Refuse(const std::string& reason) {
    return {{}, programs::ExitRefused, "kalvex-run: " + reason + "\n"};
}

}  // namespace

CommandLine ParseCommandLine(std::vector<std::string> arguments) {
    CommandLine line;
    RunOptions& options = line.options;

    CLI::App app(kPurpose, "kalvex-run");
    app.formatter(std::make_shared<UsageFormatter>());
    app.footer(kExitStatuses);
    app.allow_extras();
    app.set_help_flag(fmt::format("{},{}", kHelpLetter, kHelp.name), kHelp.help);
    app.set_version_flag(fmt::format("{},{}", kVersionLetter, kVersion.name),
                         "kalvex-run " KALVEX_VERSION, kVersion.help);
    app.add_option(kScript, options.scripts);
    for (const OptionRow& row : kOptions) Add(app, row, options);
    try {
        std::ranges::reverse(arguments);
        app.parse(arguments);
    } catch (const CLI::CallForHelp&) {
        return {{}, 0, app.help()};
    } catch (const CLI::CallForVersion&) {
        return {{}, 0, app.version() + "\n"};
    } catch (const CLI::ArgumentMismatch& error) {
        const std::string what = error.what();  // begins with the option and a colon
        return Refuse(what.substr(0, what.find(':')) + " needs a value");
    } catch (const CLI::ParseError& error) {
        return Refuse(error.what());
    }
    if (const std::string unknown = FirstUnknown(app); !unknown.empty()) {
        return Refuse("unknown option " + unknown +
                      programs::Suggest(DescribeCommandLine(), unknown));
    }
    if (const std::string conflict = FindConflict(app, options); !conflict.empty()) {
        return Refuse(conflict);
    }
    if (options.scripts.empty() && !options.language) return Refuse("no script is named");
    if (options.clock && !options.until && !options.ticks) options.ticks = kTicksOfVirtualRun;
    return line;
}

programs::CommandForm DescribeCommandLine() {
    const programs::ValueForm values[] = {{"WORD", programs::Offer::Told, "words"},
                                          {kScript, programs::Offer::File, ".kx"}};
    programs::CommandForm form{.name = "kalvex-run"};
    const auto add = [&](const OptionRow& row, const char* shortName) {
        const char* const value = row.value == nullptr ? "" : row.value;
        form.options.push_back(
            {row.name, shortName, programs::MakeValueForm(value, values), row.help});
    };
    for (const OptionRow& row : kOptions) add(row, "");
    add(kVersion, kVersionLetter);
    add(kHelp, kHelpLetter);
    form.arguments = {programs::MakeValueForm(kScript, values)};
    form.lastRepeats = true;
    return form;
}

}  // namespace kalvex::run
