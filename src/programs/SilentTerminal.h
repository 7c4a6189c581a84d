// A terminal that shows nothing of what is typed, as long as this lives.
#pragma once

#include <termios.h>

namespace kalvex::programs {

class SilentTerminal {
  public:
    explicit SilentTerminal(int descriptor) : m_descriptor(descriptor) {
        ::tcgetattr(m_descriptor, &m_before);
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(m_descriptor, TCSAFLUSH, &silent);
    }
    ~SilentTerminal() { ::tcsetattr(m_descriptor, TCSAFLUSH, &m_before); }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

  private:
    const int m_descriptor;
    termios m_before{};
};

}  // namespace kalvex::programs
