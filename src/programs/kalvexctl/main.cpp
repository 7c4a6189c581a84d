#include <csignal>
#include <cstdio>
#include <ctime>

#include "programs/kalvexctl/Call.h"

int main(int argc, char** argv) {
    tzset();
    // Whoever reads the output may go away.
    std::signal(SIGPIPE, SIG_IGN);
    const kalvex::kalvexctl::ControlLine line =
        kalvex::kalvexctl::ParseControlLine({argv + 1, argv + argc});
    if (!line.ending) return kalvex::kalvexctl::RunKalvexctl(line);
    if (line.ending->status == kalvex::programs::ExitDone) {
        std::fputs(line.ending->text.c_str(), stdout);
    } else {
        kalvex::kalvexctl::Output::Tell(*line.ending);
    }
    return line.ending->status;
}
