#include "programs/kalvexd/Options.h"

#include "text/CodePage.h"

namespace kalvex::kalvexd {

namespace {

void TakeSource(KalvexdOptions& options, SourceTask task, const std::string& value) {
    const std::string text = text::FromUtf8(value);
    const std::size_t comma = text.find(',');
    const std::string user = comma == std::string::npos ? "" : text.substr(comma + 1);
    options.source = SourceOrder{task, text.substr(0, comma), user};
}

constexpr programs::OptionRow<KalvexdOptions> kRows[] = {
    {"--working-dir", "FOLDER", "The folder of the profile and of scripts (the current one)",
     [](KalvexdOptions& options, const std::string& value) { options.workingDir = value; }},
    {"--log-dir", "FOLDER", "The folder of the log files (the working one)",
     [](KalvexdOptions& options, const std::string& value) { options.logDir = value; }},
    {"--log-stdout", nullptr, "Write the log to standard output as well",
     [](KalvexdOptions& options, const std::string&) { options.logStdout = true; }},
    {"--metrics", "ADDRESS",
     "Figures for Prometheus: 127.0.0.1:9464, [::1]:9464, or the path of a socket (none)",
     [](KalvexdOptions& options, const std::string& value) { options.metrics = value; }},
    {"--check", nullptr, "Tell what is wrong with the profile and its scripts, and exit",
     [](KalvexdOptions& options, const std::string&) { options.check = true; }},
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

constexpr programs::ProgramTexts kProgram{
    "kalvexd",
    "Usage: kalvexd [OPTIONS] [OPTIONS OF A MODULE]\n"
    "Runs Kalvex scripts as a service: those that its profile names, until it is told to end.\n"
    "\nOptions:\n",
    "\n\"/?\" lists the options of a module, such as /INST:2 and /D:5.\n"
    "SIGTERM and SIGINT end the service, SIGHUP has it open its log files anew, SIGUSR1 has it\n"
    "write the figures of its health to the log.\n"
    "Exit status: 0 ended by a signal, or nothing is wrong; 1 it could not start, or --check has\n"
    "found something; 2 wrong usage.\n",
    "the profile names the scripts, kalvex-run runs one at a prompt, kalvexctl asks a running "
    "module",
    false};

}  // namespace

KalvexdLine ParseKalvexdLine(const std::vector<std::string>& arguments,
                             const std::string& currentDir) {
    return programs::ParseOptions<KalvexdOptions>(kProgram, kRows, arguments, currentDir);
}

programs::CommandForm DescribeCommandLine() {
    return programs::DescribeOptions<KalvexdOptions>(kProgram, kRows);
}

}  // namespace kalvex::kalvexd
