#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "platform/GettextTranslator.h"
#include "programs/glossary/LanguageHelp.h"
#include "programs/kalvex-run/Interruption.h"
#include "programs/kalvex-run/JsonResult.h"
#include "programs/kalvex-run/Options.h"
#include "programs/kalvex-run/Runner.h"
#include "programs/kalvex-run/Testing.h"
#include "programs/kalvex-run/TextResult.h"

namespace {

bool Print(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
           std::fflush(stdout) == 0;
}

// A line for each of the reason.
int Fail(const std::string& reason) {
    for (std::size_t begin = 0; begin <= reason.size();) {
        const std::size_t end = std::min(reason.find('\n', begin), reason.size());
        const int length = static_cast<int>(end - begin);
        std::fprintf(stderr, "kalvex-run: %.*s\n", length, reason.c_str() + begin);
        begin = end + 1;
    }
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

// What the tables of the language say of the word, or all of its words.
int Tell(const std::string& word) {
    const kalvex::glossary::LanguageHelp help(
        kalvex::glossary::MakeGlossary(kalvex::platform::GettextTranslator()));
    const std::string text = word.empty() ? help.List() : help.TextOf(word);
    if (!text.empty()) {
        return Print(text) ? kalvex::programs::ExitDone : Fail("the help cannot be written");
    }
    const std::vector<std::string> near = help.FindNear(word);
    return Fail(fmt::format("\"{}\" is no word of the language{}{}", word,
                            near.empty() ? "" : "; near: ", fmt::join(near, ", ")));
}

int Test(const kalvex::run::RunOptions& options) {
    std::string fault;
    const int status = kalvex::run::RunScriptTests(options.scripts, options.junit, fault);
    return fault.empty() ? status : Fail(fault);
}

}  // namespace

int main(int argc, char** argv) {
    tzset();
    const kalvex::run::CommandLine line = kalvex::run::ParseCommandLine({argv + 1, argv + argc});
    if (line.exitStatus) {
        std::fputs(line.message.c_str(), *line.exitStatus == 0 ? stdout : stderr);
        return *line.exitStatus;
    }
    if (line.options.language) return Tell(*line.options.language);
    return line.options.test ? Test(line.options) : Run(line.options);
}
