#include "programs/sorvaned/Tasks.h"

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>

#include "platform/Files.h"
#include "platform/GettextTranslator.h"
#include "platform/ProcessMemory.h"
#include "platform/ServiceManager.h"
#include "platform/Threads.h"
#include "platform/UserStore.h"
#include "platform/posix/PosixMainLoop.h"
#include "platform/posix/SystemClock.h"
#include "programs/PasswordPrompt.h"
#include "programs/sorvaned/Acknowledge.h"
#include "programs/sorvaned/AlarmJournal.h"
#include "programs/sorvaned/Check.h"
#include "programs/sorvaned/Export.h"
#include "programs/sorvaned/History.h"
#include "programs/sorvaned/Import.h"
#include "programs/sorvaned/Listening.h"
#include "programs/sorvaned/ServerLog.h"
#include "programs/sorvaned/Values.h"
#include "server/Backup.h"
#include "server/Server.h"
#include "text/CodePage.h"

namespace kalvex::sorvaned {

namespace {

constexpr std::int64_t kTick = 100;  // ms
constexpr std::int64_t kCheck = 1000;

int Fail(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) std::cerr << line << '\n';
    return programs::ExitFailed;
}

// What the users' file has told.
int FailWithUsers(const std::string& error, const platform::Translator& translator) {
    return Fail({text::ToUtf8(translator.Translate(text::ToUtf8(error).c_str()))});
}

int Fail(const std::vector<std::string>& lines, ServerLog& log) {
    log.Tell(lines);
    return programs::ExitFailed;
}

int Serve(const SorvanedOptions& options, const platform::Translator& translator) {
    if (const platform::Notice fault = platform::CheckThreads()) {
        return Fail({platform::InWords(fault, translator)});
    }
    const platform::SystemClock clock;
    platform::PosixMainLoop loop;
    ServerLog log(STDERR_FILENO, options.logLevel, clock, translator);
    server::Server server(clock, log, translator, loop);
    // Before the server makes its threads, which inherit what is blocked here.
    loop.OnSignal(SIGHUP, [&server] { server.Reload(); });
    loop.OnSignal(SIGUSR1, [&server] { server.LogHealth(); });
    loop.OnSignal(SIGTERM, [&loop] { loop.Quit(); });
    loop.OnSignal(SIGINT, [&loop] { loop.Quit(); });
    platform::ServiceManager manager;
    std::vector<std::string> errors;
    if (!server.Start(options.configuration, errors)) return Fail(errors, log);
    std::unique_ptr<vantrel::NetworkServer> network;
    std::string error;
    if (!OpenToClients(server, loop, log, translator, network, error)) {
        server.Stop();
        return Fail({text::ToUtf8(error)}, log);
    }
    std::unique_ptr<platform::HttpEndpoint> endpoint;
    if (!options.metrics.empty()) {
        endpoint = OfferFigures(server, options.metrics, loop, log, translator, error);
        if (!endpoint) {
            network.reset();
            server.Stop();
            return Fail({text::ToUtf8(error)}, log);
        }
    }
    loop.Every(kTick, [&server] { server.Tick(); });
    platform::MemoryReturn memory;
    loop.Every(platform::kMemoryReturnPeriod, [&memory] { memory.Step(); });
    if (network) loop.Every(kCheck, [&network] { network->Check(); });
    if (const std::optional<std::int64_t> period = manager.GetWatchdogPeriod()) {
        loop.Every(*period, [&manager] { manager.TellAlive(); });
    }
    manager.TellReady();
    loop.Run();
    manager.TellStopping();
    endpoint.reset();
    network.reset();
    server.Stop();
    return programs::ExitDone;
}

int AddUser(platform::UserStore& users, const platform::UserRecord& user,
            const platform::Translator& translator) {
    std::string password;
    std::string error;
    if (!programs::AskPassword(password, translator)) return programs::ExitFailed;
    return users.Add(user, text::FromUtf8(password), error) ? programs::ExitDone
                                                            : FailWithUsers(error, translator);
}

int ChangePassword(platform::UserStore& users, const platform::UserRecord& user,
                   const platform::Translator& translator) {
    std::string password;
    std::string error;
    if (!programs::AskPassword(password, translator)) return programs::ExitFailed;
    return users.SetPassword(user.name, text::FromUtf8(password), error)
               ? programs::ExitDone
               : FailWithUsers(error, translator);
}

int RemoveUser(platform::UserStore& users, const platform::UserRecord& user,
               const platform::Translator& translator) {
    std::string error;
    return users.Remove(user.name, error) ? programs::ExitDone : FailWithUsers(error, translator);
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : ",") + text::ToUtf8(text);
    return joined;
}

int ListUsers(platform::UserStore& users, const platform::UserRecord&,
              const platform::Translator& translator) {
    std::vector<platform::UserRecord> list;
    std::string error;
    if (!users.List(list, error)) return FailWithUsers(error, translator);
    for (const platform::UserRecord& user : list) {
        std::cout << text::ToUtf8(user.name) << '\t' << user.level << '\t' << Joined(user.groups)
                  << '\t' << Joined(user.addresses) << '\t' << text::ToUtf8(user.description)
                  << '\n';
    }
    return programs::ExitDone;
}

int BackUp(const server::Definitions& definitions, const SorvanedOptions& options,
           const platform::Translator& translator) {
    platform::Notice fault;
    std::vector<server::BackupFile> files;
    if (!server::MakeBackup(definitions, options.backup, files, fault)) {
        return Fail({platform::InWords(fault, translator)});
    }
    for (const server::BackupFile& file : files) {
        if (!options.json) break;
        const nlohmann::ordered_json object = {
            {"file", file.name}, {"origin", file.origin}, {"bytes", file.bytes}};
        std::cout << object.dump() << '\n';
    }
    return programs::ExitDone;
}

struct StoreTask {
    SorvanedTask task;
    int (*run)(const server::Definitions& definitions, const SorvanedOptions& options,
               const platform::Translator& translator);
};

constexpr StoreTask kStoreTasks[] = {
    {SorvanedTask::BackUp, BackUp},         {SorvanedTask::ShowHistory, ShowHistory},
    {SorvanedTask::ShowValues, ShowValues}, {SorvanedTask::Export, Export},
    {SorvanedTask::Import, Import},         {SorvanedTask::CheckStore, CheckStore},
    {SorvanedTask::ShowAlarms, ShowAlarms}, {SorvanedTask::Acknowledge, Acknowledge},
};

struct UserTask {
    SorvanedTask task;
    int (*run)(platform::UserStore& users, const platform::UserRecord& user,
               const platform::Translator& translator);
};

constexpr UserTask kUserTasks[] = {
    {SorvanedTask::AddUser, AddUser},
    {SorvanedTask::ListUsers, ListUsers},
    {SorvanedTask::ChangePassword, ChangePassword},
    {SorvanedTask::RemoveUser, RemoveUser},
};

}  // namespace

int RunSorvaned(const SorvanedOptions& options) {
    const platform::GettextTranslator translator;
    if (options.task == SorvanedTask::Serve) return Serve(options, translator);
    server::Definitions definitions;
    std::vector<std::string> errors;
    if (!server::LoadDefinitions(options.configuration, translator, definitions, errors))
        return Fail(errors);
    for (const StoreTask& row : kStoreTasks) {
        if (row.task == options.task) return row.run(definitions, options, translator);
    }
    for (const UserTask& row : kUserTasks) {
        if (row.task != options.task) continue;
        // The users' file tells what is wrong.
        std::string error;
        platform::MakePrivateFolder(
            std::filesystem::path(definitions.usersFile).parent_path().string(), error);
        platform::UserStore users;
        if (!users.Open(definitions.usersFile, error)) return FailWithUsers(error, translator);
        return row.run(users, options.user, translator);
    }
    return programs::ExitDone;
}

}  // namespace kalvex::sorvaned
