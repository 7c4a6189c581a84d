#include "platform/posix/ChildProcesses.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace kalvex::platform {

namespace {

constexpr int kSignalBase = 128;

std::atomic<ChildProcess*> g_children{nullptr};
std::atomic<int> g_requests{0};

int ExitCodeOf(int status) {
    return WIFSIGNALED(status) ? kSignalBase + WTERMSIG(status) : WEXITSTATUS(status);
}

void CloseDescriptor(ChildProcess& child) {
    const int fd = child.fd.exchange(-1);
    if (fd >= 0) close(fd);
}

void Reap(ChildProcess& child) {
    const pid_t pid = child.pid.load();
    if (pid == 0) return;
    int status = 0;
    const pid_t ended = waitpid(pid, &status, WNOHANG);
    if (ended == 0 || (ended < 0 && errno != ECHILD)) return;
    child.state.store(ended > 0 ? ExitCodeOf(status) : ChildProcess::kLost);
    CloseDescriptor(child);
    child.pid.store(0);
}

void OnChildSignal(int) {
    const int error = errno;
    ReapChildren();
    errno = error;
}

}  // namespace

void WatchChildren() {
    [[maybe_unused]] static const bool installed = [] {
        struct sigaction action {};
        action.sa_handler = OnChildSignal;
        action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
        sigemptyset(&action.sa_mask);
        return sigaction(SIGCHLD, &action, nullptr) == 0;
    }();
}

ChildProcess* AddChild(pid_t pid, int fd) {
    ChildProcess* child = g_children.load();
    while (child != nullptr && (child->inUse || child->pid.load() != 0)) child = child->next;
    const bool isNew = child == nullptr;
    if (isNew) {
        child = new ChildProcess;
        child->next = g_children.load();
    }
    child->state.store(ChildProcess::kRunning);
    child->inUse = true;
    child->fd.store(fd);
    child->pid.store(pid);
    if (isNew) g_children.store(child);
    ReapChildren();
    return child;
}

void ReleaseChild(ChildProcess* child) {
    CloseDescriptor(*child);
    child->inUse = false;
}

// One walk at a time: as long as it lasts, no number of an ended child can belong to another.
void ReapChildren() {
    if (g_requests.fetch_add(1) > 0) return;
    int served = 0;
    do {
        served = g_requests.load();
        for (ChildProcess* child = g_children.load(); child != nullptr; child = child->next) {
            Reap(*child);
        }
    } while (g_requests.fetch_sub(served) != served);
}

}  // namespace kalvex::platform
