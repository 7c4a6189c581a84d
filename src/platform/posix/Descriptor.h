// A descriptor of the system's, closed with its owner.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace kalvex::platform {

class Descriptor {
  public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd >= 0) ::close(m_fd);
    }
    Descriptor(Descriptor&& other) : m_fd(other.Release()) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor&& other) {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    int Get() const { return m_fd; }
    int Release() { return std::exchange(m_fd, -1); }

  private:
    int m_fd;
};

// One that a program cannot do without: it ends when the system has none to give.
inline int CheckedDescriptor(int fd) {
    if (fd >= 0) return fd;
    std::perror("main loop");
    std::exit(EXIT_FAILURE);
}

}  // namespace kalvex::platform
