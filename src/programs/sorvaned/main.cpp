#include <sys/stat.h>

#include <cstdio>
#include <ctime>

#include "programs/sorvaned/Tasks.h"

int main(int argc, char** argv) {
    tzset();
    // What the server writes is for its account and its group.
    ::umask(0027);
    const kalvex::SorvanedLine line = kalvex::ParseSorvanedLine({argv + 1, argv + argc});
    if (!line.exitStatus) return kalvex::RunSorvaned(line.options);
    std::fputs(line.message.c_str(), *line.exitStatus == 0 ? stdout : stderr);
    return *line.exitStatus;
}
