#include "killed_writer.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace kalvex::server {

void TellConfirmed(int tell, std::int64_t number) {
    if (::write(tell, &number, sizeof number) != sizeof number) ::_exit(2);
}

std::vector<std::int64_t> RunAndKill(const std::function<void(int tell)>& write,
                                     std::size_t enough) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        write(ends[1]);
        ::_exit(4);
    }
    ::close(ends[1]);
    std::vector<std::int64_t> confirmed;
    std::int64_t number;
    bool killed = false;
    while (::read(ends[0], &number, sizeof number) == sizeof number) {
        confirmed.push_back(number);
        if (!killed && confirmed.size() >= enough) {
            ::kill(child, SIGKILL);
            killed = true;
        }
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    return confirmed;
}

}  // namespace kalvex::server
