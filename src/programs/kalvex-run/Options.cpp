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

constexpr const char* kPurpose =
    "Runs Kalvex scripts, against the real clock or a virtual one, and prints what happened.";
constexpr const char* kExitStatuses =
    "Exit status: 0 every script finished; 1 a script stopped or stands on an error;\n"
    "2 wrong usage, a file that cannot be read or is not valid, a start that was\n"
    "refused, or an action that could not be carried out; 3 the tick limit came first.";

class UsageFormatter final : public CLI::Formatter {
  public:
    UsageFormatter() { column_width(32); }
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: kalvex-run [OPTIONS] SCRIPT.kx [SCRIPT.kx ...]\n";
    }
    std::string make_positionals(const CLI::App*) const override { return {}; }
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_size() == 0 ? "" : " " + option->get_type_name();
    }
};

void AddNumber(CLI::App& app, const std::string& name, std::int64_t least, std::int64_t greatest,
               std::int64_t& out, const std::string& help) {
    const auto take = [=, &out](const std::string& text) {
        const auto number = text::ReadWholeNumber<std::int64_t>(text);
        if (number && *number >= least && *number <= greatest) {
            out = *number;
            return;
        }
        const std::string range = greatest == INT64_MAX
                                      ? fmt::format("of at least {}", least)
                                      : fmt::format("from {} to {}", least, greatest);
        throw CLI::ValidationError(name,
                                   fmt::format("\"{}\" is not a whole number {}", text, range));
    };
    app.add_option_function<std::string>(name, take, help)->type_name("N")->take_last();
}

void AddClock(CLI::App& app, RunOptions& options) {
    const auto take = [&options](const std::string& text) {
        options.clock = value::ParseLocalTime(text);
        if (options.clock) return;
        throw CLI::ValidationError(
            "--clock", fmt::format("\"{}\" is not a time \"YYYY-MM-DD HH:MM:SS\"", text));
    };
    app.add_option_function<std::string>("--clock", take,
                                         "Virtual local time at the first tick; nothing waits then")
        ->type_name("\"YYYY-MM-DD HH:MM:SS\"")
        ->take_last();
}

void AddUser(CLI::App& app, RunOptions& options) {
    const auto take = [&options](const std::string& text) {
        const std::size_t colon = text.find(':');
        options.userName = text::FromUtf8(text.substr(0, colon));
        if (colon != std::string::npos)
            options.userDescription = text::FromUtf8(text.substr(colon + 1));
        if (options.userName.empty()) {
            throw CLI::ValidationError("--user", fmt::format("\"{}\" names nobody", text));
        }
    };
    app.add_option_function<std::string>("--user", take, "The user who is logged in")
        ->type_name("NAME[:DESCRIPTION]")
        ->take_last();
}

void AddFile(CLI::App& app, const std::string& name, std::optional<std::string>& out,
             const std::string& help) {
    app.add_option(name, out, help)->type_name("FILE")->take_last();
}

// The library counts the sign that ends the options among what it does not know.
std::string FirstUnknown(const CLI::App& app) {
    for (const std::string& argument : app.remaining()) {
        if (argument != "--") return argument;
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
    std::int64_t ticks = -1;
    std::int64_t logLevel = -1;

    CLI::App app(kPurpose, "kalvex-run");
    app.formatter(std::make_shared<UsageFormatter>());
    app.footer(kExitStatuses);
    app.allow_extras();
    app.set_help_flag("-h,--help", "Print this and exit");
    app.set_version_flag("-V,--version", "kalvex-run " KALVEX_VERSION,
                         "Print the version and exit");
    app.add_option("SCRIPT", options.scripts);
    AddClock(app, options);
    AddNumber(app, "--tick-ms", 1, kGreatestTickMs, options.tickMs,
              "Milliseconds of virtual time per tick (default 1)");
    AddNumber(app, "--ticks", 0, INT64_MAX, ticks,
              "Stop after N ticks (1000000 with --clock, else without end)");
    app.add_flag("--minimised", options.minimised,
                 "Run every script as if its window were minimised");
    AddFile(app, "--plant", options.plant, "Simulated data servers");
    AddFile(app, "--actions", options.actions, "Operator actions at given ticks");
    AddUser(app, options);
    AddNumber(app, "--log-level", 0, 3, logLevel,
              "Log: 0 always, 1 errors, 2 events, 3 transmission (default: of the "
              "profile, or 1)");
    app.add_flag("--json", options.json, "Print the result as one JSON object and nothing else");
    app.add_flag("--lines", options.lines, "Add each script's text after preparation to the JSON");
    AddFile(app, "--profile", options.profile, "Profile to read sources and settings from");

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
        return Refuse("unknown option " + unknown);
    }
    if (options.scripts.empty()) return Refuse("no script is named");
    if (logLevel >= 0) options.logLevel = static_cast<int>(logLevel);
    if (ticks >= 0) {
        options.ticks = ticks;
    } else if (options.clock) {
        options.ticks = kTicksOfVirtualRun;
    }
    return line;
}

}  // namespace kalvex::run
