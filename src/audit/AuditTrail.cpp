#include "audit/AuditTrail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "audit/AuditFiles.h"
#include "platform/posix/RegularFile.h"
#include "text/CodePage.h"
#include "value/LocalTime.h"

namespace kalvex::audit {

namespace {

constexpr const char* kNotWritten =
    platform::Translatable("Nie można zapisać pliku %s (%s), przepadają wpisy o zmianach");

}  // namespace

AuditTrail::~AuditTrail() {
    if (m_lost > 0) Write(LostLine());
}

void AuditTrail::SetFile(std::string name, std::size_t maxBytes) {
    if (m_lost > 0) Write(LostLine());
    Reopen();
    m_name = maxBytes == 0 ? std::string() : std::move(name);
    m_maxBytes = maxBytes;
    m_day = -1;
    m_lost = 0;
}

bool AuditTrail::CanOpen(std::string& error) {
    if (m_name.empty() || Open()) return true;
    error = platform::FileFault(errno);
    return false;
}

void AuditTrail::Add(const AuditRecord& record) {
    if (m_name.empty()) return;
    if (m_clock.Now() / value::kSecondsPerDay != m_day) RemoveOldFiles();
    const std::string line = AuditLine({m_clock.Now(), record});
    if (Write(m_lost > 0 ? LostLine() + line : line)) {
        m_lost = 0;
        return;
    }
    const std::string reason = platform::FileFault(errno);
    if (m_lost++ > 0) return;
    const platform::Notice fault{kNotWritten, {AuditFile(m_name, 0), reason}};
    m_log.Log(text::FromUtf8(platform::InWords(fault, m_translator)), platform::LogErrors);
}

std::string AuditTrail::LostLine() const {
    return AuditLine(
        {m_clock.Now(), {.action = AuditAction::Lost, .newValue = std::to_string(m_lost)}});
}

bool AuditTrail::Open() {
    if (m_file.Get() >= 0) return true;
    platform::Descriptor file(
        platform::OpenRegularFile(AuditFile(m_name, 0), O_RDWR | O_CREAT | O_APPEND, 0640));
    if (file.Get() < 0 || !platform::EndLastLine(file.Get())) return false;
    m_file = std::move(file);
    return true;
}

bool AuditTrail::Write(std::string_view lines) {
    struct stat info {};
    if (!Open() || ::fstat(m_file.Get(), &info) != 0) return false;
    const bool full =
        info.st_size > 0 && static_cast<std::size_t>(info.st_size) + lines.size() > m_maxBytes;
    if (full && TurnAuditFilesOver(m_name)) {
        Reopen();
        RemoveOldFiles();
        info.st_size = 0;
        if (!Open()) return false;
    }
    if (platform::WriteAll(m_file.Get(), lines)) return true;
    const int fault = errno;
    // Where the system does not let the part of the line go, the next opening ends it.
    [[maybe_unused]] const int cut = ::ftruncate(m_file.Get(), info.st_size);
    Reopen();
    errno = fault;
    return false;
}

void AuditTrail::RemoveOldFiles() {
    const std::int64_t now = m_clock.Now();
    m_day = now / value::kSecondsPerDay;
    RemoveAuditFiles(m_name, now - kKeptDays * value::kSecondsPerDay);
}

}  // namespace kalvex::audit
