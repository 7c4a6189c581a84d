// The log on standard output, for a service manager or a person.
#pragma once

#include <cstdio>

#include "app/Log.h"

namespace kalvex::app {

enum class LogStreamForm {
    Stamped,   // as in the file
    Priority,  // "<3>text": the journal sets the time and understands the level
};

// Priority where the journal itself reads standard output.
LogStreamForm FormOfStandardOutput();

class LogStream final : public LogListener {
  public:
    // The stream is not owned. A line that it does not take is lost.
    LogStream(std::FILE* stream, LogStreamForm form) : m_stream(stream), m_form(form) {}
    void OnLogMessage(const LogMessage& message) override;

  private:
    std::FILE* m_stream;
    LogStreamForm m_form;
};

}  // namespace kalvex::app
