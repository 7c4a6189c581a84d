#include "platform/posix/Processes.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include "platform/posix/ChildProcesses.h"
#include "platform/posix/WindowClose.h"

// The C library's header leaves it to the includer to say that it is C.
extern "C" {
#include <sys/pidfd.h>
}

namespace kalvex::platform {

namespace {

constexpr const char* kNowhere = "/dev/null";
constexpr int kFirstOwnDescriptor = 3;

// How a child begins: with signals and descriptors as at a login, and in a group of its own.
class SpawnSettings {
  public:
    explicit SpawnSettings(const std::string& directory) {
        posix_spawnattr_init(&attributes);
        posix_spawn_file_actions_init(&actions);
        sigset_t all;
        sigset_t none;
        sigfillset(&all);
        sigemptyset(&none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setflags(
            &attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, kNowhere, O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, kNowhere, O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&actions, kFirstOwnDescriptor);
        if (!directory.empty()) {
            posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
        }
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
};

// The child's number, or 0 with errno set.
pid_t Spawn(const ProgramCall& call) {
    std::vector<std::string> words;
    words.push_back(call.program);
    words.insert(words.end(), call.arguments.begin(), call.arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const SpawnSettings settings(call.directory);
    pid_t pid = 0;
    errno = posix_spawnp(&pid, call.program.c_str(), &settings.actions, &settings.attributes,
                         argv.data(), environ);
    return errno == 0 ? pid : 0;
}

// A descriptor of the process, never 0; -1 with errno set.
int DescriptorOf(pid_t pid) {
    const int fd = pidfd_open(pid, 0);
    if (fd != 0) return fd;
    const int other = fcntl(fd, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
    close(fd);
    return other;
}

int Fail(std::string& error, int code = errno) {
    error = std::strerror(code);
    return 0;
}

}  // namespace

PosixProcesses::PosixProcesses() {
    WatchChildren();
}

PosixProcesses::~PosixProcesses() {
    while (!m_byId.empty()) Release(m_byId.begin()->first);
}

// A descriptor is set aside before the program starts: one that runs and cannot be told of would be
// started a second time.
int PosixProcesses::Start(const ProgramCall& call, std::string& error) {
    const int reserve = open(kNowhere, O_RDONLY | O_CLOEXEC);
    if (reserve < 0) return Fail(error);
    const pid_t pid = Spawn(call);
    const int reason = errno;
    close(reserve);
    if (pid == 0) return Fail(error, reason);
    const int fd = DescriptorOf(pid);
    if (fd >= 0) return Register(pid, fd);
    Fail(error);
    ReleaseChild(AddChild(pid, fd));
    return 0;
}

int PosixProcesses::Register(pid_t pid, int fd) {
    const int id = m_byId.contains(fd) ? m_lastId + 1 : fd;
    m_lastId = std::max(m_lastId, id);
    m_byId[id] = {AddChild(pid, fd), 0, std::nullopt};
    return id;
}

// Takes note of the end of a program.
bool PosixProcesses::IsRunning(Entry& entry) {
    if (entry.child == nullptr) return false;
    ReapChildren();
    entry.state = entry.child->state.load();
    if (entry.state == ChildProcess::kRunning) return true;
    LetGo(entry);
    return false;
}

// The descriptor of a program that has ended is closed, or names no process.
bool PosixProcesses::SendSignal(const Entry& entry, int signal) {
    if (pidfd_send_signal(entry.child->fd.load(), signal, nullptr, 0) == 0) return true;
    if (errno == EBADF) errno = ESRCH;
    return false;
}

void PosixProcesses::LetGo(Entry& entry) {
    if (entry.child != nullptr) ReleaseChild(entry.child);
    entry.child = nullptr;
}

void PosixProcesses::Release(int id) {
    const auto found = m_byId.find(id);
    if (found == m_byId.end()) return;
    LetGo(found->second);
    m_byId.erase(found);
}

std::optional<int> PosixProcesses::GetExitCode(int id, std::string& error) {
    const auto found = m_byId.find(id);
    if (found == m_byId.end()) {
        Fail(error, EBADF);
        return std::nullopt;
    }
    Entry& entry = found->second;
    if (IsRunning(entry)) return kStillActive;
    if (entry.terminateCode) return entry.terminateCode;
    if (entry.state != ChildProcess::kLost) return entry.state;
    Fail(error, ECHILD);
    return std::nullopt;
}

bool PosixProcesses::Terminate(int id, int exitCode, std::string& error) {
    const auto found = m_byId.find(id);
    if (found == m_byId.end() || !IsRunning(found->second)) return Fail(error, ESRCH) != 0;
    if (!SendSignal(found->second, SIGKILL)) return Fail(error) != 0;
    found->second.terminateCode = exitCode;
    return true;
}

bool PosixProcesses::RequestClose(int id) {
    const auto found = m_byId.find(id);
    if (found == m_byId.end() || !IsRunning(found->second)) return false;
    const pid_t pid = found->second.child->pid.load();
    if (pid != 0 && RequestWindowClose(pid) > 0) return true;
    return SendSignal(found->second, SIGTERM);
}

void PosixProcesses::WaitSecond() {
    timespec left{1, 0};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
    if (m_afterSecond) m_afterSecond();
}

}  // namespace kalvex::platform
