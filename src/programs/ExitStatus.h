// What the programs end with.
#pragma once

namespace kalvex::programs {

enum ExitStatus : int {
    ExitDone = 0,
    ExitFailed = 1,
    ExitRefused = 2,  // the command line is wrong, or what it names is none that could run
    ExitLimit = 3,    // something was still running when its time was up
};

}  // namespace kalvex::programs
