#include <cstdio>
#include <ctime>
#include <string>

#include "programs/kalvex-run/Interruption.h"
#include "programs/kalvex-run/JsonResult.h"
#include "programs/kalvex-run/Options.h"
#include "programs/kalvex-run/Runner.h"
#include "programs/kalvex-run/TextResult.h"

namespace {

bool Print(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
           std::fflush(stdout) == 0;
}

int Fail(const std::string& reason) {
    std::fprintf(stderr, "kalvex-run: %s\n", reason.c_str());
    return kalvex::programs::ExitRefused;
}

int Run(const kalvex::run::RunOptions& options) {
    kalvex::run::Runner runner(options);
    std::string fault;
    if (!runner.Open(fault)) return Fail(fault);
    kalvex::run::WatchInterruption();
    runner.Run();
    const bool printed =
        Print(options.json ? JsonResult(runner, options.lines) : TextResult(runner));
    return printed ? runner.GetExitStatus() : Fail("the result cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
    tzset();
    const kalvex::run::CommandLine line = kalvex::run::ParseCommandLine({argv + 1, argv + argc});
    if (!line.exitStatus) return Run(line.options);
    std::fputs(line.message.c_str(), *line.exitStatus == 0 ? stdout : stderr);
    return *line.exitStatus;
}
