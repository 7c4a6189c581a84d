#include "programs/sorvaned/Tasks.h"

#include <csignal>
#include <filesystem>
#include <iostream>

#include "platform/GettextTranslator.h"
#include "platform/ServiceManager.h"
#include "platform/UserStore.h"
#include "platform/posix/PosixMainLoop.h"
#include "platform/posix/SystemClock.h"
#include "programs/PasswordPrompt.h"
#include "programs/sorvaned/Listening.h"
#include "server/Server.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"

namespace kalvex {

namespace {

constexpr std::int64_t kTick = 100;  // ms
constexpr std::int64_t kCheck = 1000;

class ErrorOutputLog final : public LogSink {
  public:
    ErrorOutputLog(const Clock& clock, int level) : m_clock(clock), m_nLevel(level) {}

    void Log(std::string_view text, int level) override {
        if (level > m_nLevel) return;
        std::cerr << FormatLocalTime(m_clock.Now()) << ' ' << ToUtf8(text) << std::endl;
    }

  private:
    const Clock& m_clock;
    int m_nLevel;
};

int Fail(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) std::cerr << line << '\n';
    return ExitFailed;
}

int Fail(const std::string& engineText) {
    return Fail(std::vector<std::string>{ToUtf8(engineText)});
}

// What the users' file has told.
int FailWithUsers(const std::string& error, const Translator& translator) {
    return Fail(translator.Translate(ToUtf8(error).c_str()));
}

int Serve(const SorvanedOptions& options, const Translator& translator) {
    const SystemClock clock;
    PosixMainLoop loop;
    ErrorOutputLog log(clock, options.logLevel);
    Server server(clock, log, translator, loop);
    // Before the server makes its threads, which inherit what is blocked here.
    loop.OnSignal(SIGHUP, [&server] { server.Reload(); });
    loop.OnSignal(SIGTERM, [&loop] { loop.Quit(); });
    loop.OnSignal(SIGINT, [&loop] { loop.Quit(); });
    ServiceManager manager;
    std::vector<std::string> errors;
    if (!server.Start(options.configuration, errors)) return Fail(errors);
    std::unique_ptr<NetworkServer> network;
    std::string error;
    if (!OpenToClients(server, loop, log, translator, network, error)) {
        server.Stop();
        return Fail(error);
    }
    loop.Every(kTick, [&server] { server.Tick(); });
    if (network) loop.Every(kCheck, [&network] { network->Check(); });
    if (const std::optional<std::int64_t> period = manager.GetWatchdogPeriod()) {
        loop.Every(*period, [&manager] { manager.TellAlive(); });
    }
    manager.TellReady();
    loop.Run();
    manager.TellStopping();
    network.reset();
    server.Stop();
    return ExitDone;
}

int AddUser(UserStore& users, const UserRecord& user, const Translator& translator) {
    std::string password;
    std::string error;
    if (!AskPassword(password, translator)) return ExitFailed;
    return users.Add(user, FromUtf8(password), error) ? ExitDone : FailWithUsers(error, translator);
}

int ChangePassword(UserStore& users, const UserRecord& user, const Translator& translator) {
    std::string password;
    std::string error;
    if (!AskPassword(password, translator)) return ExitFailed;
    return users.SetPassword(user.name, FromUtf8(password), error)
               ? ExitDone
               : FailWithUsers(error, translator);
}

int RemoveUser(UserStore& users, const UserRecord& user, const Translator& translator) {
    std::string error;
    return users.Remove(user.name, error) ? ExitDone : FailWithUsers(error, translator);
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : ",") + ToUtf8(text);
    return joined;
}

int ListUsers(UserStore& users, const UserRecord&, const Translator& translator) {
    std::vector<UserRecord> list;
    std::string error;
    if (!users.List(list, error)) return FailWithUsers(error, translator);
    for (const UserRecord& user : list) {
        std::cout << ToUtf8(user.name) << '\t' << user.level << '\t' << Joined(user.groups) << '\t'
                  << Joined(user.addresses) << '\t' << ToUtf8(user.description) << '\n';
    }
    return ExitDone;
}

struct UserTask {
    SorvanedTask task;
    int (*run)(UserStore& users, const UserRecord& user, const Translator& translator);
};

constexpr UserTask kUserTasks[] = {
    {SorvanedTask::AddUser, AddUser},
    {SorvanedTask::ListUsers, ListUsers},
    {SorvanedTask::ChangePassword, ChangePassword},
    {SorvanedTask::RemoveUser, RemoveUser},
};

}  // namespace

int RunSorvaned(const SorvanedOptions& options) {
    const GettextTranslator translator;
    if (options.task == SorvanedTask::Serve) return Serve(options, translator);
    Definitions definitions;
    std::vector<std::string> errors;
    if (!LoadDefinitions(options.configuration, translator, definitions, errors))
        return Fail(errors);
    for (const UserTask& row : kUserTasks) {
        if (row.task != options.task) continue;
        std::error_code failed;
        std::filesystem::create_directories(
            std::filesystem::path(definitions.usersFile).parent_path(), failed);
        UserStore users;
        std::string error;
        if (!users.Open(definitions.usersFile, error)) return FailWithUsers(error, translator);
        return row.run(users, options.user, translator);
    }
    return ExitDone;
}

}  // namespace kalvex
