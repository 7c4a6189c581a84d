// The system calls by which files are written, counted from a point on, so that any of them can be
// the last of its process or fail. The program is linked so that they come by here.
#pragma once

#include <string>

namespace kalvex::host {

enum class Blow { None, Kill, Refuse };  // none counts nothing

// What file systems differ in. It makes the calls fail that one of that kind refuses, whether they
// are counted or not.
struct DiskKind {
    const char* name = "usual";
    int exchange = 0;           // the errno of each renameat2; 0: it can do it
    int link = 0;               // that of each link
    int lock = 0;               // that of each lock
    bool foldersApart = false;  // nothing is renamed or linked from one folder to another
    bool lockIsWrite = false;   // a file that is not open for writing cannot be locked alone
};

// Shared with the processes that are forked later.
struct CountedCalls {
    Blow blow = Blow::None;
    int at = 0;  // the number of the call that is struck, from 1
    int count = 0;
    char struck[32] = "";  // the call that was struck; empty: none
    char all[1024] = "";   // a blank behind each
    DiskKind disk;
    bool syncs = true;  // or does not wait for the disk, which a process that is killed needs not
};

CountedCalls& Calls();

}  // namespace kalvex::host
