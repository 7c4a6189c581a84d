#include "audit/AuditFiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/posix/Descriptor.h"
#include "platform/posix/RegularFile.h"
#include "text/WholeNumber.h"

namespace kalvex::audit {

namespace {

constexpr const char* kEnding = ".log";
constexpr std::size_t kChunk = 65536;

// Of NAME.7.log the 7; nothing for a file that is none of the older ones.
std::optional<int> NumberOf(std::string_view file, std::string_view name) {
    if (!file.starts_with(name) || !file.ends_with(kEnding)) return {};
    file.remove_prefix(name.size());
    file.remove_suffix(std::string_view(kEnding).size());
    if (!file.starts_with('.')) return {};
    file.remove_prefix(1);
    const auto number = text::ReadWholeNumber<int>(file);
    if (!number || *number < 1 || std::to_string(*number) != file) return {};
    return number;
}

// Ascending, so that the newest comes first.
std::vector<int> OlderNumbers(const std::string& name) {
    const std::filesystem::path path(name);
    std::vector<int> numbers;
    std::error_code fault;
    std::filesystem::directory_iterator entry(path.has_parent_path() ? path.parent_path() : ".",
                                              fault);
    for (; !fault && entry != std::filesystem::directory_iterator(); entry.increment(fault)) {
        const auto number = NumberOf(entry->path().filename().native(), path.filename().native());
        if (number) numbers.push_back(*number);
    }
    std::ranges::sort(numbers);
    return numbers;
}

bool IsThere(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

// The last line of these that tells a time. The first may be the end of one, which never does.
std::optional<std::int64_t> LastTimeIn(std::string_view content) {
    while (!content.empty()) {
        const std::size_t end = content.rfind('\n');
        const auto entry = ParseAuditLine(content.substr(end + 1));
        if (entry) return entry->time;
        content = content.substr(0, end == content.npos ? 0 : end);
    }
    return {};
}

std::optional<std::int64_t> LastTime(const std::string& path) {
    const platform::Descriptor file(platform::OpenRegularFile(path, O_RDONLY));
    struct stat info {};
    if (file.Get() < 0 || ::fstat(file.Get(), &info) != 0) return {};
    const auto size = static_cast<std::size_t>(info.st_size);
    for (std::size_t window = kChunk;; window *= 4) {
        const std::size_t length = std::min(window, size);
        std::string content(length, '\0');
        const ssize_t count =
            ::pread(file.Get(), content.data(), length, static_cast<off_t>(size - length));
        if (count != static_cast<ssize_t>(length)) return {};
        const auto time = LastTimeIn(content);
        if (time || length == size) return time;
    }
}

// Hands over the lines of a file without their ends, a piece of it in memory at a time. A line that
// is too long comes as an empty one.
class Lines {
  public:
    explicit Lines(int file) : m_file(file) {}

    // False at the end, with errno 0, or at a fault. What is there of a last line is one.
    bool Next(std::string& line) {
        line.clear();
        bool any = false;
        bool fits = true;
        for (;;) {
            if (m_at == m_end && !Fill()) return any;
            any = true;
            const std::string_view rest(m_buffer.get() + m_at, m_end - m_at);
            const std::size_t end = rest.find('\n');
            const std::string_view piece = rest.substr(0, end);
            fits = fits && line.size() + piece.size() <= kLongestAuditLine;
            if (fits) {
                line.append(piece);
            } else {
                line.clear();
            }
            m_at += piece.size();
            if (end == rest.npos) continue;
            ++m_at;
            return true;
        }
    }

  private:
    bool Fill() {
        ssize_t count;
        do {
            errno = 0;
            count = ::read(m_file, m_buffer.get(), kChunk);
        } while (count < 0 && errno == EINTR);
        m_at = 0;
        m_end = count > 0 ? static_cast<std::size_t>(count) : 0;
        return m_end > 0;
    }

    const int m_file;
    const std::unique_ptr<char[]> m_buffer = std::make_unique<char[]>(kChunk);
    std::size_t m_at = 0;
    std::size_t m_end = 0;
};

bool Concerns(const AuditRecord& record, std::string_view script) {
    return script.empty() || record.script == script ||
           (record.script.empty() && ConcernsAllScripts(record.action));
}

struct OpenFile {
    platform::Descriptor file;
    struct stat info;
    std::string path;
};

// All at once and the newest first: a file that is turned over meanwhile comes by twice, and never
// not at all. Oldest first in the answer.
std::vector<OpenFile> OpenAll(const std::vector<std::string>& files, AuditReading& reading) {
    std::vector<OpenFile> open;
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        const std::string& path = *file;
        OpenFile next{platform::Descriptor(platform::OpenRegularFile(path, O_RDONLY)), {}, path};
        if (next.file.Get() < 0 || ::fstat(next.file.Get(), &next.info) != 0) {
            if (errno != ENOENT) {
                reading.faults.push_back(fmt::format("{} ({})", path, platform::FileFault(errno)));
            }
            continue;
        }
        const bool known = std::ranges::any_of(open, [&](const OpenFile& other) {
            return other.info.st_dev == next.info.st_dev && other.info.st_ino == next.info.st_ino;
        });
        if (!known) open.push_back(std::move(next));
    }
    std::ranges::reverse(open);
    return open;
}

}  // namespace

std::string AuditFile(const std::string& name, int number) {
    return number == 0 ? name + kEnding : fmt::format("{}.{}{}", name, number, kEnding);
}

std::vector<std::string> AuditFiles(const std::string& name) {
    std::vector<std::string> files;
    for (const int number : OlderNumbers(name)) files.push_back(AuditFile(name, number));
    std::ranges::reverse(files);
    if (IsThere(AuditFile(name, 0))) files.push_back(AuditFile(name, 0));
    return files;
}

bool TurnAuditFilesOver(const std::string& name) {
    int free = 1;
    while (IsThere(AuditFile(name, free))) ++free;
    for (int number = free; number > 0; --number) {
        const std::string from = AuditFile(name, number - 1);
        if (std::rename(from.c_str(), AuditFile(name, number).c_str()) != 0) return false;
    }
    return true;
}

void RemoveAuditFiles(const std::string& name, std::int64_t before) {
    for (const int number : OlderNumbers(name)) {
        const std::string path = AuditFile(name, number);
        const auto last = LastTime(path);
        if (last && *last < before) ::unlink(path.c_str());
    }
}

AuditReading ReadAudit(const std::vector<std::string>& files, std::int64_t since,
                       std::string_view script, const std::function<bool(const AuditEntry&)>& sink,
                       const std::stop_token& stop) {
    AuditReading reading;
    std::string line;
    for (const OpenFile& open : OpenAll(files, reading)) {
        Lines lines(open.file.Get());
        while (lines.Next(line)) {
            if (stop.stop_requested()) return reading;
            const auto time = AuditLineTime(line);
            if (time && *time < since) continue;
            const auto entry = ParseAuditLine(line);
            if (!entry) {
                ++reading.unreadable;
                continue;
            }
            if (entry->time < since || !Concerns(entry->record, script)) continue;
            if (!sink(*entry)) return reading;
        }
        if (errno != 0) {
            reading.faults.push_back(fmt::format("{} ({})", open.path, platform::FileFault(errno)));
        }
    }
    return reading;
}

}  // namespace kalvex::audit
