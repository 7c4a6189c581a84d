#include "platform/LineWriter.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/Threads.h"
#include "platform/posix/Descriptor.h"

namespace kalvex::platform {

namespace {

constexpr std::chrono::milliseconds kUsualPatience{2000};
constexpr ThreadIdentity kThread{"LineWriter", 105};

}  // namespace

class LineWriter::Work {
  public:
    Work(int descriptor, GapText gapText)
        : m_descriptor(descriptor), m_gapText(std::move(gapText)) {}

    void Put(std::string line) {
        const std::lock_guard lock(m_mutex);
        if (m_finishing) return;
        if (m_entries.size() == kLines || line.size() > kBytes - m_bytes) {
            ++m_lost;
        } else {
            m_bytes += line.size();
            m_entries.push_back({std::exchange(m_lost, 0), std::move(line)});
        }
        m_changed.notify_all();
    }

    void Finish(std::chrono::milliseconds patience) {
        std::unique_lock lock(m_mutex);
        m_finishing = true;
        m_changed.notify_all();
        m_changed.wait_for(lock, patience, [this] { return m_ended; });
        m_abandoned = true;
        const std::uint64_t one = 1;
        // A full counter wakes as well.
        [[maybe_unused]] const ssize_t written = ::write(m_wake.Get(), &one, sizeof one);
    }

    void Run() {
        for (Entry entry; Take(entry);) {
            m_missing += entry.lost;
            if (m_missing > 0 && WriteLine(GapLine())) m_missing = 0;
            if (entry.line && (m_missing > 0 || !WriteLine(*entry.line))) ++m_missing;
        }
        const std::lock_guard lock(m_mutex);
        m_ended = true;
        m_changed.notify_all();
    }

  private:
    struct Entry {
        std::uint64_t lost = 0;  // before the line
        std::optional<std::string> line;
    };

    // Waits for the next; false when there is none and none will come.
    bool Take(Entry& entry) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_entries.empty() || m_lost > 0 || m_finishing; });
        if (m_abandoned) return false;
        if (m_entries.empty()) {
            entry = {std::exchange(m_lost, 0), std::nullopt};
            return entry.lost > 0;
        }
        entry = std::move(m_entries.front());
        m_entries.pop_front();
        m_bytes -= entry.line->size();
        return true;
    }

    // What the text needs may be gone as soon as the work is abandoned.
    std::string GapLine() {
        const std::lock_guard lock(m_mutex);
        return m_abandoned ? std::string() : m_gapText(m_missing);
    }

    // Whether the reader has room; waits for it until the work is abandoned.
    bool AwaitRoom() const {
        pollfd waits[] = {{m_descriptor, POLLOUT, 0}, {m_wake.Get(), POLLIN, 0}};
        while (::poll(waits, std::size(waits), -1) < 0) {
            if (errno != EINTR) return false;
        }
        return waits[1].revents == 0;
    }

    // In pieces that a pipe with room takes without a wait. What a failure leaves of a line is
    // ended before the next one.
    bool WriteLine(const std::string& line) {
        const std::string text = (m_broken ? "\n" : "") + line + '\n';
        std::string_view rest = text;
        while (!rest.empty()) {
            if (!AwaitRoom()) return false;
            const ssize_t count =
                ::write(m_descriptor, rest.data(), std::min<std::size_t>(rest.size(), PIPE_BUF));
            if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
            if (count < 0) return false;
            rest.remove_prefix(static_cast<std::size_t>(count));
            m_broken = !rest.empty();
        }
        return true;
    }

    const int m_descriptor;
    const GapText m_gapText;
    const Descriptor m_wake{::eventfd(0, EFD_CLOEXEC)};

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Entry> m_entries;
    std::size_t m_bytes = 0;   // of their lines
    std::uint64_t m_lost = 0;  // behind the last entry
    bool m_finishing = false;
    bool m_abandoned = false;
    bool m_ended = false;

    // Of the writer's thread.
    std::uint64_t m_missing = 0;
    bool m_broken = false;
};

LineWriter::LineWriter(int descriptor, GapText gapText)
    : m_work(std::make_shared<Work>(descriptor, std::move(gapText))) {
    std::thread thread = StartThread(kThread, [work = m_work] { work->Run(); });
    if (thread.joinable()) {
        thread.detach();
    } else {
        m_work->Finish({});
    }
}

LineWriter::~LineWriter() {
    Finish(kUsualPatience);
}

void LineWriter::Write(std::string line) {
    m_work->Put(std::move(line));
}

void LineWriter::Finish(std::chrono::milliseconds patience) {
    m_work->Finish(patience);
}

}  // namespace kalvex::platform
