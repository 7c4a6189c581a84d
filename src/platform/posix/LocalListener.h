// A socket that listens for programs of this machine and for no others. Any thread.
#pragma once

#include <string>

#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

class LocalListener {
  public:
    LocalListener() : m_socket(-1) {}
    // A local socket's file goes with its listener.
    ~LocalListener();
    LocalListener(const LocalListener&) = delete;
    LocalListener& operator=(const LocalListener&) = delete;

    // "127.0.0.1:9464", "[::1]:9464", or a path that begins with "/". A local socket that nobody
    // listens on any more is replaced. False with the reason. Once.
    bool Listen(const std::string& address, std::string& error);

    int Get() const { return m_socket.Get(); }  // does not block
    const std::string& GetAddress() const { return m_address; }

  private:
    bool ListenOnPath(const std::string& path, std::string& error);
    bool ListenOnPort(const std::string& address, std::string& error);

    Descriptor m_socket;
    std::string m_address;
    std::string m_file;
};

}  // namespace kalvex::platform
