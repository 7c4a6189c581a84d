// A small disk of its own for this process; it is gone with the process. Before any other thread is
// made.
#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <string>

namespace kalvex::support {

// False when this user may not have one.
inline bool MountSmallDisk(const std::string& folder, int kilobytes) {
    if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
    const std::string size = "size=" + std::to_string(kilobytes) + "k";
    return mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

}  // namespace kalvex::support
