// Reads an audit trail beside the main thread, a piece at a time, and never ahead of who takes the
// pieces. Main thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "platform/MainLoop.h"
#include "supervision/SupervisionParcels.h"
#include "vantrel/network/HandOver.h"

namespace kalvex::supervision {

// Of entries in a piece, and of the bytes of their texts from which on it is full.
inline constexpr std::size_t kEntriesOfAPiece = 500;
inline constexpr std::size_t kBytesOfAPiece = 256 << 10;

class AuditReader {
  public:
    // Gets a piece, the last one being told. The next one is read after TakeNext.
    using Sink = std::function<void(AuditPiece piece, bool last)>;

    // The loop outlives the reader. The first piece is read at once. Files are paths of the system,
    // oldest first; an empty script stands for all. Without a thread there is one piece with a
    // fault.
    AuditReader(std::vector<std::string> files, std::int64_t since, std::string script,
                platform::MainLoop& loop, Sink sink);
    // The thread ends with the line that it is at.
    ~AuditReader() { m_handOver->Stop(); }
    AuditReader(const AuditReader&) = delete;
    AuditReader& operator=(const AuditReader&) = delete;

    void TakeNext();

  private:
    void Read(const std::stop_token& stop, const std::vector<std::string>& files,
              std::int64_t since, const std::string& script);
    // False when nobody reads on.
    bool Give(const std::stop_token& stop, AuditPiece piece, bool last);

    const Sink m_sink;
    const std::shared_ptr<vantrel::HandOver> m_handOver;
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    bool m_wanted = true;  // a piece may be given
    std::jthread m_thread;
};

}  // namespace kalvex::supervision
