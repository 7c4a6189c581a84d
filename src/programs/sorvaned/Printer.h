// Standard output of a command that may print very much, to a reader that may stand still or go
// away. Main thread.
#pragma once

#include <string>
#include <string_view>

#include "platform/Translator.h"

namespace kalvex::sorvaned {

class Printer {
  public:
    // UTF-8; comes out when enough has been put together, at Flush at the latest.
    void Put(std::string_view text);
    // False when nothing can be written any more: the reader has gone, the disk is full, or a
    // signal for which the process has a handler has come while the reader stood still.
    bool Flush();
    bool IsClosed() const { return m_closed; }

    // Flushes. The exit status; what has failed, the going of the reader apart, is told on standard
    // error.
    int End(const platform::Translator& translator);

  private:
    bool Write(std::string_view piece);

    std::string m_text;
    bool m_closed = false;
    int m_error = 0;
};

}  // namespace kalvex::sorvaned
