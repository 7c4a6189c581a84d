#include "platform/RoomReserve.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

void KeepRoom(const std::string& path, std::size_t bytes) {
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file.Get() < 0) return;
    if (::posix_fallocate(file.Get(), 0, static_cast<off_t>(bytes)) != 0) ::unlink(path.c_str());
}

bool ReleaseRoom(const std::string& path) {
    return ::unlink(path.c_str()) == 0;
}

}  // namespace kalvex::platform
