#include "programs/kalvex/Options.h"

#include <algorithm>
#include <filesystem>

#include "app/CmdLine.h"
#include "app/Configuration.h"

namespace kalvex::desk {

namespace {

using programs::ModuleOptions;

constexpr programs::OptionRow<ModuleOptions> kRows[] = {
    {"--working-dir", "FOLDER", "The folder of the profile and of scripts (the current one)",
     [](ModuleOptions& options, const std::string& value) { options.workingDir = value; }},
    {"--log-dir", "FOLDER", "The folder of the log files (the working one)",
     [](ModuleOptions& options, const std::string& value) { options.logDir = value; }},
    {"--version", nullptr, "Print the version and exit", nullptr},
    {"--help", nullptr, "Print this and exit", nullptr},
};

constexpr programs::ProgramTexts kProgram{
    "kalvex",
    "Usage: kalvex [OPTIONS] [OPTIONS OF A MODULE] [SCRIPT.kx ...]\n"
    "The window of Kalvex: runs the scripts that its profile names, and opens further ones; or,\n"
    "beside a module that runs already, the console of that module.\n"
    "\nOptions:\n",
    "\n\"/?\" shows the options of a module, such as /INST:2 and /RC.\n"
    "SIGTERM and SIGINT end the program without a question, SIGHUP has it open its log files\n"
    "anew, SIGUSR1 has it write the figures of its health to the log.\n"
    "Exit status: 0 closed by the person or by a signal; 1 it could not start, or nobody logged\n"
    "in; 2 wrong usage.\n",
    "the name of a script ends in .kx", true};

}  // namespace

DeskLine ParseDeskLine(std::vector<std::string> arguments, const std::string& currentDir) {
    for (std::string& argument : arguments) {
        if (app::CCmdLine::IsScript(argument) && argument.front() != '-') {
            argument = (std::filesystem::path(currentDir) / argument).string();
        }
    }
    const bool hasFolder = std::ranges::any_of(arguments, [](const std::string& argument) {
        return argument.substr(0, argument.find('=')) == kRows[0].name;
    });
    DeskLine line = programs::ParseOptions<ModuleOptions>(kProgram, kRows, arguments, currentDir);
    if (hasFolder) return line;
    if (line.options.logDir == line.options.workingDir) line.options.logDir.clear();
    line.options.workingDir.clear();
    return line;
}

programs::CommandForm DescribeCommandLine() {
    programs::CommandForm form = programs::DescribeOptions<ModuleOptions>(kProgram, kRows);
    form.arguments = {{"SCRIPT", programs::Offer::File, ".kx"}};
    form.lastRepeats = true;
    return form;
}

std::string UsualFolder(const std::string& currentDir, const std::string& home,
                        const std::string& dataHome) {
    std::error_code fault;
    const bool isStart = currentDir == "/" || (!home.empty() && currentDir == home);
    const std::filesystem::path profile =
        std::filesystem::path(currentDir) / app::ProfileFileName(1);
    if (!isStart || std::filesystem::exists(profile, fault)) return currentDir;
    const std::filesystem::path data = dataHome.empty()
                                           ? std::filesystem::path(home) / ".local/share"
                                           : std::filesystem::path(dataHome);
    return (data / "kalvex").string();
}

}  // namespace kalvex::desk
