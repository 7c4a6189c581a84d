// The system calls by which files are written, counted from a point on, so that any of them can be
// the last of its process or fail. The program is linked so that they come by here.
#pragma once

#include <string>

namespace kalvex::host {

enum class Blow { None, Kill, Refuse };  // none counts nothing

// Shared with the processes that are forked later.
struct CountedCalls {
    Blow blow = Blow::None;
    int at = 0;  // the number of the call that is struck, from 1
    int count = 0;
    char struck[32] = "";  // the call that was struck; empty: none
    char all[1024] = "";   // a blank behind each
};

CountedCalls& Calls();

}  // namespace kalvex::host
