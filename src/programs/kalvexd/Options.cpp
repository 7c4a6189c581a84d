#include "programs/kalvexd/Options.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "programs/ExitStatus.h"
#include "text/CodePage.h"

namespace kalvex::kalvexd {

namespace {

struct OptionRow {
    const char* name;
    const char* value;  // as the help shows it; null for an option without one
    const char* help;
    void (*take)(KalvexdOptions& options, const std::string& value);
};

void TakeSource(KalvexdOptions& options, SourceTask task, const std::string& value) {
    const std::string text = text::FromUtf8(value);
    const std::size_t comma = text.find(',');
    const std::string user = comma == std::string::npos ? "" : text.substr(comma + 1);
    options.source = SourceOrder{task, text.substr(0, comma), user};
}

constexpr OptionRow kRows[] = {
    {"--working-dir", "FOLDER", "The folder of the profile and of scripts (the current one)",
     [](KalvexdOptions& options, const std::string& value) { options.workingDir = value; }},
    {"--log-dir", "FOLDER", "The folder of the log files (the working one)",
     [](KalvexdOptions& options, const std::string& value) { options.logDir = value; }},
    {"--log-stdout", nullptr, "Write the log to standard output as well",
     [](KalvexdOptions& options, const std::string&) { options.logStdout = true; }},
    {"--metrics", "ADDRESS",
     "Figures for Prometheus: 127.0.0.1:9464, [::1]:9464, or the path of a socket (none)",
     [](KalvexdOptions& options, const std::string& value) { options.metrics = value; }},
    {"--add-source", "NAME,USER",
     "Put the login of a data server into the profile, with a password that is asked for",
     [](KalvexdOptions& options, const std::string& value) {
         TakeSource(options, SourceTask::Add, value);
     }},
    {"--remove-source", "NAME", "Take the login of a data server out of the profile",
     [](KalvexdOptions& options, const std::string& value) {
         TakeSource(options, SourceTask::Remove, value);
     }},
    {"--list-sources", nullptr, "List the logins of the profile: name and user, a tab between them",
     [](KalvexdOptions& options, const std::string&) {
         options.source = SourceOrder{SourceTask::List, {}, {}};
     }},
    {"--protect", nullptr, "Print a password, which is asked for, as a script may have it",
     [](KalvexdOptions& options, const std::string&) {
         options.source = SourceOrder{SourceTask::Protect, {}, {}};
     }},
    {"--version", nullptr, "Print the version and exit", nullptr},
    {"--help", nullptr, "Print this and exit", nullptr},
};

const OptionRow* FindRow(std::string_view argument) {
    const std::string_view name = argument.substr(0, argument.find('='));
    const auto row =
        std::ranges::find(kRows, name, [](const OptionRow& r) { return std::string_view(r.name); });
    return row == std::end(kRows) ? nullptr : row;
}

KalvexdLine End(int status, std::string message) {
    return {{}, status, std::move(message)};
}

std::string Help() {
    std::string help =
        "Usage: kalvexd [OPTIONS] [OPTIONS OF A MODULE]\n"
        "Runs Kalvex scripts as a service: those that its profile names, until it is told to end.\n"
        "\nOptions:\n";
    for (const OptionRow& row : kRows) {
        const std::string form =
            row.value == nullptr ? row.name : fmt::format("{} {}", row.name, row.value);
        help += fmt::format("  {:<26}{}\n", form, row.help);
    }
    return help +
           "\n\"/?\" lists the options of a module, such as /INST:2 and /D:5.\n"
           "SIGTERM and SIGINT end the service, SIGHUP has it open its log files anew, SIGUSR1 has "
           "it\n"
           "write the figures of its health to the log.\n"
           "Exit status: 0 ended by a signal; 1 it could not start; 2 wrong usage.\n";
}

}  // namespace

KalvexdLine ParseKalvexdLine(const std::vector<std::string>& arguments,
                             const std::string& currentDir) {
    KalvexdLine line;
    KalvexdOptions& options = line.options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const OptionRow* row = FindRow(arguments[i]);
        if (row == nullptr) {
            options.arguments.push_back(arguments[i]);
            continue;
        }
        const std::string name = row->name;
        const bool given = arguments[i].size() > name.size();
        if (row->value == nullptr && given) {
            return End(programs::ExitRefused, "kalvexd: " + name + " takes no value\n");
        }
        if (name == "--help") return End(programs::ExitDone, Help());
        if (name == "--version") return End(programs::ExitDone, "kalvexd " KALVEX_VERSION "\n");
        std::string value = given ? arguments[i].substr(name.size() + 1) : std::string();
        if (row->value != nullptr && !given && i + 1 < arguments.size()) {
            value = arguments[++i];
        }
        if (row->value != nullptr && value.empty()) {
            return End(programs::ExitRefused, "kalvexd: " + name + " needs a value\n");
        }
        row->take(options, value);
    }
    const std::filesystem::path current = currentDir;
    const auto absolute = [](const std::filesystem::path& base, const std::string& folder) {
        std::string path = (base / folder).lexically_normal().string();
        if (path.size() > 1 && path.ends_with('/')) path.pop_back();
        return path;
    };
    options.workingDir = absolute(current, options.workingDir);
    options.logDir =
        options.logDir.empty() ? options.workingDir : absolute(current, options.logDir);
    return line;
}

}  // namespace kalvex::kalvexd
