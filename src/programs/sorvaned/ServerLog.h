// The log of the server on a descriptor: "2024-03-10 07:00:00 text", in UTF-8. Whoever reads it may
// stand still or go away, and the disk may be full: nobody waits, and lines that are lost are told
// by their number as soon as lines can be written again. Main thread.
#pragma once

#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/LineWriter.h"
#include "platform/LogSink.h"
#include "platform/Translator.h"

namespace kalvex::sorvaned {

class ServerLog final : public platform::LogSink {
  public:
    // Nothing is owned; clock and translator may be asked by another thread. Lines above `level`
    // are dropped.
    ServerLog(int descriptor, int level, const platform::Clock& clock,
              const platform::Translator& translator);

    void Log(std::string_view text, int level) override;
    // Lines without a time, in UTF-8: why there is no server.
    void Tell(const std::vector<std::string>& lines);

  private:
    const platform::Clock& m_clock;
    const int m_level;
    platform::LineWriter m_writer;
};

}  // namespace kalvex::sorvaned
