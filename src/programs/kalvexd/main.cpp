#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "app/CmdLine.h"
#include "app/Configuration.h"
#include "platform/GettextTranslator.h"
#include "programs/kalvexd/Service.h"

namespace {

std::string ProfileOf(const kalvex::kalvexd::KalvexdOptions& options) {
    const int instance = kalvex::app::CCmdLine(options.arguments).GetIntOption("INST").value_or(1);
    return options.workingDir + '/' + kalvex::app::ProfileFileName(instance);
}

}  // namespace

int main(int argc, char** argv) {
    tzset();
    // What the service writes is for its account and its group.
    ::umask(0027);
    // Whoever reads the log on standard output may go away.
    std::signal(SIGPIPE, SIG_IGN);
    std::error_code fault;
    const std::string current = std::filesystem::current_path(fault).string();
    const kalvex::kalvexd::KalvexdLine line =
        kalvex::kalvexd::ParseKalvexdLine({argv + 1, argv + argc}, current);
    if (line.exitStatus) {
        std::fputs(line.message.c_str(), *line.exitStatus == 0 ? stdout : stderr);
        return *line.exitStatus;
    }
    for (const std::string& folder : {line.options.logDir, line.options.workingDir}) {
        std::filesystem::current_path(folder, fault);
        if (!fault) continue;
        std::fprintf(stderr, "kalvexd: %s: %s\n", folder.c_str(), fault.message().c_str());
        return EXIT_FAILURE;
    }
    if (line.options.source) {
        return kalvex::kalvexd::RunSourceTask(*line.options.source, ProfileOf(line.options),
                                              kalvex::platform::GettextTranslator());
    }
    return kalvex::kalvexd::KalvexService(line.options).Run();
}
