// The data server's store: current values over a restart, archives and reports.
//
// Two threads of its own: a writer, which commits what is submitted and then acknowledges it, and a
// reader, which answers range reads in pieces. The public operations belong to the main thread and
// never wait, but for Open, Flush and Close. What the threads bring about comes back through the
// main loop, which outlives the store.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/MainLoop.h"
#include "server/StoreFile.h"

namespace kalvex::server {

struct StoreOutcome {
    bool committed = false;  // on disk, all of it; otherwise nothing of it is
    std::string error;       // why not, an engine text
    ChangedReports changed;
    std::uint64_t firstChange = 0;  // the sequence of the first of these; the others follow
};

struct StoreQuery {
    VariableId variable = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t from = 0;  // bounds included
    std::int64_t to = 0;
    std::int64_t limit = 0;  // values in this piece at most
};

struct StorePiece {
    bool read = false;
    std::vector<value::CVal> values;  // ascending by time
    bool more = false;                // further values follow behind the last one
};

class Store {
  public:
    // Operations that may wait to be written, urgent ones and those of the background.
    static constexpr std::size_t kMostUrgent = 500000;
    static constexpr std::size_t kMostBackground = 20000;

    enum class Urgency {
        Now,
        // One submission at a time, between those that are urgent, and dropped at the end.
        Background,
    };

    using Done = std::function<void(const StoreOutcome&)>;

    explicit Store(platform::MainLoop& loop) : m_loop(loop) {}
    ~Store() { Close(); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    // Opens the file, makes it if it is not there, and starts the threads. Called once.
    bool Open(const std::string& path, platform::Notice& error);

    // Writes what is urgent and ends the threads. No `done` is called any more.
    void Close();

    // The number of the variable, a new one if it has none yet. A new one is in the file before
    // the first operation that is committed with it.
    VariableId Register(std::string_view name);

    // What the file held when it was opened.
    std::optional<value::CVal> LastValue(VariableId variable) const;
    std::optional<std::int64_t> Progress(const std::string& what) const;
    const std::vector<NumberedChange>& ChangesAtOpening() const { return m_contents.reportChanges; }
    const std::vector<SaveAnswer>& AnswersAtOpening() const { return m_contents.answers; }

    // The operations are committed together, in their order. Urgent submissions keep their order
    // among themselves. `done` is called when it is decided; it may be empty. False, and nothing
    // happens, when too much waits already.
    bool Submit(std::vector<StoreOperation> operations, Urgency urgency, Done done);

    // One piece of a range read. It sees every urgent submission that was made before.
    void Read(const StoreQuery& query, std::function<void(StorePiece)> done);

    // Waits until everything that has been asked for is done; the calls of `done` are then with the
    // main loop.
    void Flush();

  private:
    struct Submission {
        std::vector<StoreOperation> operations;
        Done done;
        bool urgent = true;
    };

    struct ReadJob {
        StoreQuery query;
        std::function<void(StorePiece)> done;
        std::uint64_t after = 0;  // the urgent submission that it has to see
    };

    void Write();
    std::vector<Submission> NextBatch();
    bool Commit(std::vector<Submission>& batch, const std::vector<SaveName>& names);
    void ReadPieces();

    void PostDone(std::function<void()> done);

    platform::MainLoop& m_loop;
    // Outlives the store in what is posted. The main thread's.
    const std::shared_ptr<bool> m_open = std::make_shared<bool>(true);
    StoreFile m_writeFile;  // the writer's, once it runs
    StoreFile m_readFile;   // the reader's
    StoreFile::Contents m_contents;
    VariableId m_lastVariable = 0;

    std::mutex m_mutex;  // guards all below
    std::condition_variable m_work;
    std::condition_variable m_done;
    std::vector<SaveName> m_names;  // to go with the next transaction
    std::deque<Submission> m_urgent;
    std::deque<Submission> m_background;
    std::deque<ReadJob> m_reads;
    std::size_t m_urgentWaiting = 0;  // in operations
    std::size_t m_backgroundWaiting = 0;
    std::uint64_t m_urgentMade = 0;
    std::uint64_t m_urgentDone = 0;
    bool m_writing = false;
    bool m_reading = false;
    bool m_stop = false;

    std::thread m_writer;
    std::thread m_reader;
};

}  // namespace kalvex::server
