#include "server/Store.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/Files.h"
#include "platform/RoomReserve.h"
#include "platform/Threads.h"
#include "text/CodePage.h"

namespace kalvex::server {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstPause{100};
constexpr milliseconds kLongestPause{2000};
// How long writing may fail before a read that has to see it fails too, and before the store closes
// without it.
constexpr milliseconds kReadPatience{3000};
constexpr milliseconds kClosePatience{700};
// With their clients' names, which clients give themselves.
constexpr std::size_t kMostWriters = 100'000;
constexpr std::int64_t kCloseTime = 700'000;  // microseconds for all that waits
// What a start needs: the shared memory of the log and a little more.
constexpr std::size_t kReserve = std::size_t{256} << 10;

}  // namespace

// The room that was kept lets a store open on a disk that has none, to be read at least.
bool Store::Open(const std::string& path, platform::Notice& error) {
    // For its owner alone, as is what SQLite puts beside it; SQLite tells what is wrong.
    std::string ignored;
    platform::MakePrivateFile(path, ignored);
    m_reserve = path + ".reserve";
    const auto openOne = [&](StoreFile& file) { return file.Open(path, error); };
    const auto open = [&] {
        return openOne(m_writeFile) && std::ranges::all_of(m_readFiles, openOne);
    };
    if (!open() && (!platform::ReleaseRoom(m_reserve) || !open())) return false;
    platform::KeepRoom(m_reserve, kReserve);
    if (!m_writeFile.ReadContents(m_contents) || !m_writeFile.FailAtLocks()) {
        error = {"%s", {text::ToUtf8(m_writeFile.ErrorText())}};
        return false;
    }
    for (const auto& [name, id] : m_contents.variables) {
        m_lastVariable = std::max(m_lastVariable, id);
    }
    for (const auto& [writer, id] : m_contents.writers) m_lastWriter = std::max(m_lastWriter, id);
    m_writer = platform::StartThread({"store-writer"}, [this] { Write(); });
    bool started = m_writer.joinable();
    for (std::size_t index = 0; started && index < kReaders; ++index) {
        m_readers[index] = platform::StartThread({"store-reader"},
                                                 [this, index] { ReadPieces(m_readFiles[index]); });
        started = m_readers[index].joinable();
    }
    if (started) return true;
    Close();
    error = {"%s", {std::strerror(EAGAIN)}};
    return false;
}

StoreTrouble Store::Close() {
    *m_open = false;
    if (!m_writer.joinable()) return {};
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
        m_stopBy = m_now() + kCloseTime;
        m_reads.clear();
    }
    m_work.notify_all();
    m_pause->Cut();
    m_writer.join();
    for (std::thread& reader : m_readers) {
        if (reader.joinable()) reader.join();
    }
    m_queue.DropBackground();
    return {m_queue.Empty(), m_error, m_queue.Operations()};
}

VariableId Store::Register(std::string_view name) {
    const auto [known, isNew] = m_contents.variables.emplace(name, m_lastVariable + 1);
    if (isNew) {
        ++m_lastVariable;
        const std::lock_guard lock(m_mutex);
        m_queue.PushName(SaveName{known->second, known->first});
    }
    return known->second;
}

WriterId Store::Register(const Writer& writer) {
    const bool isFull = m_contents.writers.size() >= kMostWriters && !writer.client.empty();
    if (isFull && m_contents.writers.count(writer) == 0) {
        return Register(Writer{writer.user, {}, writer.address});
    }
    const auto [known, isNew] = m_contents.writers.emplace(writer, m_lastWriter + 1);
    if (isNew) {
        ++m_lastWriter;
        const std::lock_guard lock(m_mutex);
        m_queue.PushName(SaveWriter{known->second, known->first});
    }
    return known->second;
}

std::optional<value::CVal> Store::LastValue(VariableId variable) const {
    const auto found = m_contents.lastValues.find(variable);
    if (found == m_contents.lastValues.end()) return std::nullopt;
    return found->second;
}

std::optional<std::int64_t> Store::Progress(const std::string& what) const {
    const auto found = m_contents.progress.find(what);
    if (found == m_contents.progress.end()) return std::nullopt;
    return found->second;
}

bool Store::IsEmpty() {
    const std::lock_guard lock(m_mutex);
    return m_queue.Empty();
}

StoreFigures Store::Figures() {
    const std::lock_guard lock(m_mutex);
    StoreFigures figures = m_figures;
    figures.waiting = m_queue.Operations();
    return figures;
}

bool Store::HasRoomForClients() {
    const std::lock_guard lock(m_mutex);
    return m_queue.HasRoomForClients();
}

bool Store::HasRoom(Urgency urgency) {
    const std::lock_guard lock(m_mutex);
    return m_queue.HasRoom(urgency);
}

bool Store::Submit(std::vector<StoreOperation> operations, Urgency urgency, Done done) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_queue.HasRoom(urgency)) return false;
        m_queue.Push(std::move(operations), urgency, std::move(done));
    }
    m_work.notify_all();
    return true;
}

void Store::Read(const StoreQuery& query, std::function<void(StorePiece)> done) {
    {
        const std::lock_guard lock(m_mutex);
        m_reads.push_back({query, std::move(done), m_queue.Made()});
    }
    m_work.notify_all();
}

void Store::Flush() {
    std::unique_lock lock(m_mutex);
    m_done.wait(lock, [this] {
        return m_queue.Empty() && m_reads.empty() && !m_writing && m_reading == 0;
    });
}

void Store::Write() {
    bool triesAtEnd = false;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_work.wait(lock, [this] { return m_stop || !m_queue.Empty(); });
        if (m_stop) m_queue.DropBackground();
        if (m_queue.Empty()) return;
        if (m_stop && std::exchange(triesAtEnd, true) && m_now() > m_stopBy) return;
        const StoreBatch batch = m_queue.Next();
        m_writing = true;
        lock.unlock();
        std::vector<StoreOutcome> outcomes;
        const bool committed = Commit(batch, outcomes);
        lock.lock();
        m_writing = false;
        if (!committed) return;
        PostDone(m_queue.Take(batch, std::move(outcomes)));
        m_done.notify_all();
        m_work.notify_all();
    }
}

bool Store::Commit(const StoreBatch& batch, std::vector<StoreOutcome>& outcomes) {
    milliseconds failedFor{0};
    milliseconds pause = kFirstPause;
    std::string error;
    std::int64_t begin = m_now();
    while (!m_writeFile.Write(batch, outcomes, error)) {
        if (failedFor == milliseconds{0}) PostTrouble({false, error, 0});
        if (!OnFailure(error, failedFor, pause)) return false;
        m_pause->Wait(pause);
        failedFor += pause;
        pause = std::min(2 * pause, kLongestPause);
        begin = m_now();
    }
    OnCommitted(batch, m_now() - begin);
    if (failedFor > milliseconds{0}) OnRecovered();
    return true;
}

void Store::OnCommitted(const StoreBatch& batch, std::int64_t duration) {
    const std::lock_guard lock(m_mutex);
    for (const auto& part : batch.parts) m_figures.stored += part.size();
    m_figures.commits.Add(duration);
}

bool Store::OnFailure(const std::string& error, milliseconds failedFor, milliseconds& pause) {
    const std::lock_guard lock(m_mutex);
    ++m_figures.repeated;
    m_error = error;
    m_stuck = failedFor >= kReadPatience;
    if (m_stuck) m_work.notify_all();
    if (!m_stop) return true;
    if (m_failedSinceStop == milliseconds{0}) pause = kFirstPause;
    const bool triesAgain = m_failedSinceStop < kClosePatience;
    m_failedSinceStop += pause;
    return triesAgain;
}

void Store::OnRecovered() {
    platform::KeepRoom(m_reserve, kReserve);
    const std::lock_guard lock(m_mutex);
    m_stuck = false;
    PostTrouble({true, std::exchange(m_error, {}), m_queue.Operations()});
}

void Store::Post(std::function<void()> work) {
    m_loop.Post([open = m_open, work = std::move(work)] {
        if (*open) work();
    });
}

void Store::PostTrouble(StoreTrouble trouble) {
    Post([this, trouble = std::move(trouble)] { m_onTrouble(trouble); });
}

void Store::PostDone(std::vector<StoreQueue::Finished> finished) {
    std::erase_if(finished, [](const StoreQueue::Finished& entry) { return !entry.done; });
    if (finished.empty()) return;
    Post([finished = std::move(finished)] {
        for (const auto& [done, outcome] : finished) done(outcome);
    });
}

void Store::ReadPieces(StoreFile& file) {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_work.wait(lock, [this] {
            return m_stop ||
                   (!m_reads.empty() && (m_stuck || m_queue.Written() >= m_reads.front().after));
        });
        if (m_stop) return;
        ReadJob job = std::move(m_reads.front());
        m_reads.pop_front();
        ++m_reading;
        const bool current = m_queue.Written() >= job.after;
        lock.unlock();

        auto piece = std::make_shared<StorePiece>();
        if (current) *piece = file.ReadRange(job.query);
        Post([piece, done = std::move(job.done)] { done(std::move(*piece)); });

        lock.lock();
        --m_reading;
        m_done.notify_all();
    }
}

}  // namespace kalvex::server
