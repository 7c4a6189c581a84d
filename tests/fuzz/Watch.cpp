#include "fuzz/Watch.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>

#include "fuzz/fuzz.h"

namespace kalvex::fuzz {

namespace {

// False when an input has taken too long.
bool AwaitEnd(int pipe, const Progress& progress, std::chrono::seconds patience) {
    pollfd end{pipe, 0, 0};
    const int wait = static_cast<int>(std::chrono::milliseconds(patience).count());
    std::uint64_t before = 0;
    while (::poll(&end, 1, wait) == 0) {
        if (progress.Inputs() == before) return false;
        before = progress.Inputs();
    }
    return true;
}

std::string Ending(int status) {
    if (WIFSIGNALED(status)) return ::strsignal(WTERMSIG(status));
    return "status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

void Progress::Begin(const std::string& input) {
    m_size = input.copy(m_bytes, kMostBytes);
}

int RunWatched(const std::function<void(Progress&)>& work, std::chrono::seconds patience,
               const std::string& keep) {
    void* shared = ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Demand(shared != MAP_FAILED, "no memory");
    auto* progress = new (shared) Progress;
    int pipe[2];
    Demand(::pipe(pipe) == 0, "no pipe");
    const pid_t child = ::fork();
    Demand(child >= 0, "no process");
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::close(pipe[0]);
        work(*progress);
        std::exit(EXIT_SUCCESS);
    }
    ::close(pipe[1]);
    const bool ended = AwaitEnd(pipe[0], *progress, patience);
    if (!ended) ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ::close(pipe[0]);
    std::printf("%llu inputs\n", static_cast<unsigned long long>(progress->Inputs()));
    if (ended && status == 0) return EXIT_SUCCESS;
    std::ofstream(keep, std::ios::binary | std::ios::trunc) << progress->Running();
    std::fprintf(stderr, "%s: %s\n", keep.c_str(), ended ? Ending(status).c_str() : "no end");
    return EXIT_FAILURE;
}

}  // namespace kalvex::fuzz
