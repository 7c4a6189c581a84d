#include "platform/LogFile.h"

#include <fcntl.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix/Descriptor.h"
#include "platform/posix/RegularFile.h"
#include "text/ControlText.h"

namespace kalvex::platform {

namespace {

// Whether the file can be opened now; a part of a line at its end, which a full disk leaves, is
// ended. The library would wait on a file that does not open.
bool Prepare(const std::string& path) {
    const Descriptor file(OpenRegularFile(path, O_RDWR | O_CREAT | O_APPEND, 0640));
    return file.Get() >= 0 && EndLastLine(file.Get());
}

spdlog::file_event_handlers Unbuffered() {
    spdlog::file_event_handlers handlers;
    handlers.after_open = [](const spdlog::filename_t&, std::FILE* file) {
        std::setvbuf(file, nullptr, _IONBF, 0);
    };
    return handlers;
}

}  // namespace

class CLogFile::Sink {
  public:
    Sink(const std::string& path, std::size_t maxBytes)
        : m_sink(path, maxBytes, kOlderFiles, false, Unbuffered()) {
        m_sink.set_formatter(std::make_unique<spdlog::pattern_formatter>("%v"));
    }

    void Write(const std::string& line) {
        m_sink.log(spdlog::details::log_msg("", spdlog::level::info, line));
    }

  private:
    spdlog::sinks::rotating_file_sink_st m_sink;
};

CLogFile::CLogFile(const Clock& clock) : m_clock(clock) {}

CLogFile::~CLogFile() = default;

void CLogFile::SetFile(std::string path, std::size_t maxBytes) {
    Reopen();
    m_path = maxBytes == 0 ? std::string() : std::move(path);
    m_maxBytes = maxBytes;
}

void CLogFile::Reopen() {
    m_sink.reset();
    m_failed = -1;
}

bool CLogFile::CanOpen(std::string& error) const {
    if (m_path.empty() || Prepare(m_path + ".log")) return true;
    error = FileFault(errno);
    return false;
}

bool CLogFile::Open() {
    const std::string path = m_path + ".log";
    if (!m_sink && Prepare(path)) m_sink = std::make_unique<Sink>(path, m_maxBytes);
    return m_sink != nullptr;
}

bool CLogFile::Write(std::string_view line) {
    if (m_path.empty()) return true;
    const std::int64_t now = m_clock.Now();
    if (now == m_failed) return false;
    const std::string text = text::EscapeUtf8Controls(line, m_keepsTabs ? '\t' : ' ');
    bool written = false;
    try {
        written = Open();
        if (written) m_sink->Write(text);
    } catch (const spdlog::spdlog_ex&) {
        m_sink.reset();
        written = false;
    }
    m_failed = written ? -1 : now;
    return written;
}

}  // namespace kalvex::platform
