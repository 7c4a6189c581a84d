#include "programs/kalvex-run/TestRun.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/Files.h"
#include "platform/posix/Descriptor.h"
#include "programs/kalvex-run/Interruption.h"
#include "programs/kalvex-run/TestJudgement.h"
#include "text/CodePage.h"

// The C library's header leaves it to the includer to say that it is C.
extern "C" {
#include <sys/pidfd.h>
}

namespace kalvex::run {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStandard[][2] = {{"--clock", "2024-03-10 07:00:00"}, {"--ticks", "3000"}};
// What may stand beside WHAT.kx, and the option that takes it.
constexpr const char* kBeside[][2] = {
    {"--plant", ".plant.json"}, {"--plant", ".plant.toml"}, {"--actions", ".actions.json"}};
constexpr const char* kSelf = "/proc/self/exe";
constexpr std::chrono::seconds kTimeLimit(300);
constexpr int kLookPeriod = 200;  // milliseconds

// A folder that goes with its owner.
class Scratch {
  public:
    Scratch() : m_path((fs::temp_directory_path() / "kalvex-XXXXXX").string()) {
        if (mkdtemp(m_path.data()) == nullptr) {
            throw TestFault{fmt::format("{}: {}", m_path, std::strerror(errno))};
        }
    }
    ~Scratch() {
        std::error_code fault;
        fs::remove_all(m_path, fault);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    fs::path Path() const { return m_path; }

  private:
    std::string m_path;
};

std::string ReadOrFail(const fs::path& path) {
    std::string content;
    std::string error;
    if (!platform::ReadWholeFile(path.string(), content, error)) {
        throw TestFault{fmt::format("{}: {}", path.string(), error)};
    }
    return content;
}

fs::path Beside(const fs::path& script, const char* ending) {
    fs::path path = script;
    return path.replace_extension(ending);
}

void CopyInto(const fs::path& folder, const fs::path& from) {
    constexpr auto kHow = fs::copy_options::recursive | fs::copy_options::overwrite_existing;
    std::error_code fault;
    fs::copy(from, folder, kHow, fault);
    if (fault) throw TestFault{fmt::format("{}: {}", from.string(), fault.message())};
}

std::vector<std::string> CommandLineOf(const ScriptTest& test, const fs::path& script,
                                       const std::string& tested) {
    std::vector<std::string> words = {"kalvex-run", "--json"};
    words.insert(words.end(), test.options.begin(), test.options.end());
    for (const auto& [option, value] : kStandard) {
        if (std::ranges::find(test.options, option) != test.options.end()) continue;
        words.insert(words.end(), {option, value});
    }
    for (const auto& [option, ending] : kBeside) {
        const fs::path beside = Beside(script, ending);
        if (fs::exists(beside)) words.insert(words.end(), {option, fs::absolute(beside).string()});
    }
    words.insert(words.end(), {"--", tested});
    return words;
}

pid_t Spawn(std::vector<std::string> words, const fs::path& folder, const fs::path& out,
            const fs::path& errors) {
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const auto open = [&actions](int fd, const fs::path& path, int flags) {
        posix_spawn_file_actions_addopen(&actions, fd, path.c_str(), flags, 0600);
    };
    open(STDIN_FILENO, "/dev/null", O_RDONLY);
    open(STDOUT_FILENO, out, O_WRONLY | O_CREAT);
    open(STDERR_FILENO, errors, O_WRONLY | O_CREAT);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    pid_t pid = 0;
    const int fault = posix_spawn(&pid, kSelf, &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (fault != 0) throw TestFault{fmt::format("no process: {}", std::strerror(fault))};
    return pid;
}

// The exit status, 128 and the signal of a process that one has ended.
int WaitFor(pid_t pid) {
    const platform::Descriptor process(pidfd_open(pid, 0));
    const auto deadline = std::chrono::steady_clock::now() + kTimeLimit;
    bool isLate = false;
    pollfd ended{process.Get(), POLLIN, 0};
    while (process.Get() >= 0 && poll(&ended, 1, kLookPeriod) <= 0) {
        if (IsInterrupted()) kill(pid, SIGTERM);
        isLate = std::chrono::steady_clock::now() > deadline;
        if (isLate) kill(pid, SIGKILL);
    }
    int state = 0;
    waitpid(pid, &state, 0);
    if (isLate) {
        throw TestFault{fmt::format("the run did not end within {} seconds", kTimeLimit.count())};
    }
    return WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
}

TestOutcome RunIn(const fs::path& scratch, const ScriptTest& test, const fs::path& script) {
    const fs::path tested =
        script.parent_path() / (test.script.empty() ? script.filename().string() : test.script);
    TestOutcome run;
    run.folder = scratch / "run";
    fs::create_directory(run.folder);
    ReadOrFail(tested);
    CopyInto(run.folder, test.script.empty() ? tested : tested.parent_path());
    const fs::path beside = Beside(script, kFolderBeside);
    if (fs::is_directory(beside)) CopyInto(run.folder, beside);
    run.path = (run.folder / tested.filename()).string();

    const fs::path out = scratch / "out";
    const fs::path errors = scratch / "errors";
    run.exitStatus = WaitFor(
        Spawn(CommandLineOf(test, script, tested.filename().string()), run.folder, out, errors));
    run.errors = ReadOrFail(errors);
    if (!text::IsUtf8(run.errors)) run.errors = text::ToUtf8(run.errors);
    run.result = TestJson::parse(ReadOrFail(out), nullptr, false);
    if (!run.result.is_object() || !run.result.contains("scripts")) {
        throw TestFault{fmt::format("exit {} and no result\n{}", run.exitStatus, run.errors)};
    }
    return run;
}

void AddLines(std::vector<std::string>& lines, std::string_view text, std::string_view mark) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(fmt::format("{}{}", mark, text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

void Judge(const fs::path& script, TestReport& report) {
    const ScriptTest test = ParseScriptTest(text::ToUtf8(ReadOrFail(script)));
    if (!test.hasInstructions) {
        report.verdict = TestVerdict::Skipped;
        report.lines = {"no expectations"};
        return;
    }
    setenv("TZ", test.zone.c_str(), 1);
    tzset();
    const Scratch scratch;
    const TestOutcome run = RunIn(scratch.Path(), test, script);
    report.lines = Differences(test, run);
    if (report.lines.empty()) return;
    report.verdict = TestVerdict::Failed;
    AddLines(report.lines, run.errors, "standard error: ");
}

}  // namespace

TestReport RunScriptTest(const fs::path& script) {
    TestReport report;
    report.script = script;
    const auto begin = std::chrono::steady_clock::now();
    try {
        Judge(script, report);
    } catch (const TestFault& fault) {
        report.verdict = TestVerdict::Broken;
        AddLines(report.lines, fault.words, "");
    } catch (const fs::filesystem_error& fault) {
        report.verdict = TestVerdict::Broken;
        report.lines.emplace_back(fault.what());
    }
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    report.seconds = passed.count();
    return report;
}

}  // namespace kalvex::run
