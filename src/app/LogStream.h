// The log on standard output, for a service manager or a person. Main thread.
#pragma once

#include "app/Log.h"
#include "platform/LineWriter.h"

namespace kalvex::app {

enum class LogStreamForm {
    Stamped,   // as in the file
    Priority,  // "<3>text": the journal sets the time and understands the level
};

// Priority where the journal itself reads the descriptor.
LogStreamForm FormOf(int descriptor);

class LogStream final : public LogListener {
  public:
    // Nothing is owned; clock and translator may be asked by another thread. A line that the
    // descriptor does not take waits, and no one waits for it; lines that are lost are told by
    // their number.
    LogStream(int descriptor, LogStreamForm form, const platform::Clock& clock,
              const platform::Translator& translator);
    void OnLogMessage(const LogMessage& message) override { m_writer.Write(LineOf(message)); }

  private:
    std::string LineOf(const LogMessage& message) const;

    const LogStreamForm m_form;
    platform::LineWriter m_writer;
};

}  // namespace kalvex::app
