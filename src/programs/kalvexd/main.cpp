#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <optional>

#include "app/CmdLine.h"
#include "app/Configuration.h"
#include "platform/CoreFiles.h"
#include "platform/GettextTranslator.h"
#include "platform/Threads.h"
#include "programs/ExitStatus.h"
#include "programs/kalvexd/Check.h"
#include "programs/kalvexd/Service.h"
#include "text/CodePage.h"

namespace {

constexpr const char* kInstance = "INST";

std::string ProfileOf(const kalvex::kalvexd::KalvexdOptions& options, int instance) {
    return options.workingDir + '/' + kalvex::app::ProfileFileName(instance);
}

// It may write, so an instance that is none is not taken for the first one.
int RunOrder(const kalvex::kalvexd::KalvexdOptions& options) {
    const kalvex::platform::GettextTranslator translator;
    const kalvex::app::CCmdLine line(options.arguments);
    const std::optional<int> instance = line.GetIntOption(kInstance);
    const std::string profile = ProfileOf(options, instance.value_or(1));
    if (options.check) return kalvex::kalvexd::RunCheck(options, line, profile, translator);
    if (instance || !line.HasOption(kInstance)) {
        return kalvex::kalvexd::RunSourceTask(*options.source, profile, translator);
    }
    for (const std::string& warning : line.GetWarnings(translator)) {
        std::fprintf(stderr, "kalvexd: %s\n", kalvex::text::ToUtf8(warning).c_str());
    }
    return kalvex::programs::ExitRefused;
}

}  // namespace

int main(int argc, char** argv) {
    kalvex::platform::ForbidCoreFiles();
    tzset();
    // What the service writes is for its account and its group.
    ::umask(0027);
    // Whoever reads the log on standard output may go away, and a file may be as long as the system
    // lets it be.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
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
    if (line.options.source || line.options.check) return RunOrder(line.options);
    if (const kalvex::platform::Notice lack = kalvex::platform::CheckThreads()) {
        const kalvex::platform::GettextTranslator translator;
        std::fprintf(stderr, "kalvexd: %s\n", InWords(lack, translator).c_str());
        return EXIT_FAILURE;
    }
    return kalvex::kalvexd::KalvexService(line.options).Run();
}
