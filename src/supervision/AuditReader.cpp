#include "supervision/AuditReader.h"

#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "audit/AuditFiles.h"

namespace kalvex::supervision {

namespace {

std::size_t BytesOf(const audit::AuditRecord& record) {
    return record.script.size() + record.user.size() + record.client.size() + record.name.size() +
           record.oldValue.value_or("").size() + record.newValue.value_or("").size();
}

std::jthread Start(std::function<void(const std::stop_token&)> work) {
    try {
        return std::jthread(std::move(work));
    } catch (const std::system_error&) {
        return {};
    }
}

}  // namespace

AuditReader::AuditReader(std::vector<std::string> files, std::int64_t since, std::string script,
                         platform::MainLoop& loop, Sink sink)
    : m_sink(std::move(sink)),
      m_handOver(
          std::make_shared<vantrel::HandOver>(loop, std::numeric_limits<std::size_t>::max())),
      m_thread(Start([this, files = std::move(files), since, script = std::move(script)](
                         const std::stop_token& stop) { Read(stop, files, since, script); })) {
    if (m_thread.joinable()) return;
    m_handOver->Push([this] { m_sink({.faults = {std::strerror(EAGAIN)}}, true); }, 0);
}

void AuditReader::TakeNext() {
    {
        const std::lock_guard lock(m_mutex);
        m_wanted = true;
    }
    m_changed.notify_all();
}

void AuditReader::Read(const std::stop_token& stop, const std::vector<std::string>& files,
                       std::int64_t since, const std::string& script) {
    AuditPiece piece;
    std::size_t bytes = 0;
    bool goOn = true;
    const audit::AuditReading reading = audit::ReadAudit(
        files, since, script,
        [&](const audit::AuditEntry& entry) {
            piece.entries.push_back(entry);
            bytes += BytesOf(entry.record);
            if (piece.entries.size() < kEntriesOfAPiece && bytes < kBytesOfAPiece) return true;
            bytes = 0;
            goOn = Give(stop, std::exchange(piece, {}), false);
            return goOn;
        },
        stop);
    piece.unreadable = reading.unreadable;
    piece.faults = reading.faults;
    if (goOn) Give(stop, std::move(piece), true);
}

bool AuditReader::Give(const std::stop_token& stop, AuditPiece piece, bool last) {
    {
        std::unique_lock lock(m_mutex);
        if (!m_changed.wait(lock, stop, [this] { return m_wanted; })) return false;
        m_wanted = false;
    }
    m_handOver->Push([this, piece = std::move(piece), last] { m_sink(piece, last); }, 0);
    return true;
}

}  // namespace kalvex::supervision
