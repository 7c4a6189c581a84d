#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <ctime>

#include "platform/CoreFiles.h"
#include "programs/sorvaned/Tasks.h"

int main(int argc, char** argv) {
    kalvex::platform::ForbidCoreFiles();
    tzset();
    // What the server writes is for its account and its group.
    ::umask(0027);
    // Whoever reads the log may go away, and a file may be as long as the system lets it be.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    const kalvex::sorvaned::SorvanedLine line =
        kalvex::sorvaned::ParseSorvanedLine({argv + 1, argv + argc});
    if (!line.exitStatus) return kalvex::sorvaned::RunSorvaned(line.options);
    std::fputs(line.message.c_str(), *line.exitStatus == 0 ? stdout : stderr);
    return *line.exitStatus;
}
