// The data server's store: current values over a restart, archives and reports.
//
// Threads of its own: a writer, which commits what is submitted and then acknowledges it, and
// readers, which answer range reads in pieces. A transaction that fails is repeated as it stands,
// after 0.1 s and then with pauses that double up to 2 s, until it succeeds; what came later waits
// behind it. The public operations belong to the main thread and never wait, but for Open, Flush
// and Close. What the threads bring about comes back through the main loop, which outlives the
// store.
#pragma once

#include <array>
#include <chrono>
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

#include "platform/Files.h"
#include "platform/MainLoop.h"
#include "platform/SteadyTime.h"
#include "server/Health.h"
#include "server/StoreFile.h"
#include "server/StorePause.h"
#include "server/StoreQueue.h"

namespace kalvex::server {

struct StoreSettings {
    StoreLimits limits = {};
    std::shared_ptr<StorePause> pause = MakeTimedPause();
    // Microseconds of a clock that nobody sets; any thread.
    std::function<std::int64_t()> now = platform::SteadyMicroseconds;
    // Of the disk of a folder.
    std::function<std::optional<std::uint64_t>(const std::string&)> freeBytes = platform::FreeBytes;
};

// Writing has begun to fail, or succeeds again.
struct StoreTrouble {
    bool over = false;
    std::string error;           // the reason, an engine text
    std::size_t operations = 0;  // that wait
};

class Store {
  public:
    using Urgency = StoreUrgency;
    using Done = StoreQueue::Done;
    using TroubleHandler = std::function<void(const StoreTrouble&)>;

    explicit Store(platform::MainLoop& loop, const StoreSettings& settings = {})
        : m_loop(loop), m_pause(settings.pause), m_now(settings.now), m_queue(settings.limits) {}
    ~Store() { Close(); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    // Told once when it begins and once when it is over. Set before Open.
    void OnTrouble(TroubleHandler handler) { m_onTrouble = std::move(handler); }

    // Opens the file, makes it if it is not there, and starts the threads. Called once. Beside it
    // lies "PATH.reserve", whose room is given up for opening a file that is there on a full disk.
    bool Open(const std::string& path, platform::Notice& error);

    // Writes what is urgent and ends the threads; gives up when that fails, or takes longer than,
    // 0.7 s; one transaction is tried in any case. The answer has what was given up, without an
    // error when only the time was short. No `done` is called any more.
    StoreTrouble Close();

    // The number of the variable, a new one if it has none yet. A new one is in the file before
    // the first operation that is committed with it.
    VariableId Register(std::string_view name);
    // The same for a writer.
    WriterId Register(const Writer& writer);

    // A number that no alarm has had.
    AlarmId NewAlarm() { return ++m_contents.alarms.last; }

    // What the file held when it was opened.
    std::optional<value::CVal> LastValue(VariableId variable) const;
    std::optional<std::int64_t> Progress(const std::string& what) const;
    const std::vector<NumberedChange>& ChangesAtOpening() const { return m_contents.reportChanges; }
    const std::vector<SaveAnswer>& AnswersAtOpening() const { return m_contents.answers; }
    const KeptAlarms& AlarmsAtOpening() const { return m_contents.alarms; }

    bool IsEmpty();  // nothing waits to be written
    StoreFigures Figures();

    // False while so much waits that clients' submissions should not be made any more.
    bool HasRoomForClients();
    bool HasRoom(Urgency urgency);

    // The operations are committed in their order, together if they are 20000 at most. Urgent
    // submissions keep their order among themselves. `done` is called when all is on disk; it may
    // be empty. False, and nothing happens, when there is no room.
    bool Submit(std::vector<StoreOperation> operations, Urgency urgency, Done done);

    // One piece of a range read. It sees every urgent submission that was made before; it fails
    // when these cannot be written for some seconds. Pieces may come in another order than that in
    // which they were asked for.
    void Read(const StoreQuery& query, std::function<void(StorePiece)> done);

    // Waits until everything that has been asked for is done; the calls of `done` are then with the
    // main loop.
    void Flush();

  private:
    // So that a long read holds up no other one.
    static constexpr std::size_t kReaders = 2;

    struct ReadJob {
        StoreQuery query;
        std::function<void(StorePiece)> done;
        std::uint64_t after = 0;  // the urgent submission that it has to see
    };

    void Write();
    bool Commit(const StoreBatch& batch, std::vector<StoreOutcome>& outcomes);
    void OnCommitted(const StoreBatch& batch, std::int64_t duration);
    // Takes a failure down; whether to try again after the pause.
    bool OnFailure(const std::string& error, std::chrono::milliseconds failedFor,
                   std::chrono::milliseconds& pause);
    void OnRecovered();
    void ReadPieces(StoreFile& file);

    void Post(std::function<void()> work);
    void PostTrouble(StoreTrouble trouble);
    void PostDone(std::vector<StoreQueue::Finished> finished);

    platform::MainLoop& m_loop;
    const std::shared_ptr<StorePause> m_pause;
    const std::function<std::int64_t()> m_now;
    std::string m_reserve;  // the path
    TroubleHandler m_onTrouble = [](const StoreTrouble&) {};
    // Outlives the store in what is posted. The main thread's.
    const std::shared_ptr<bool> m_open = std::make_shared<bool>(true);
    StoreFile m_writeFile;                        // the writer's, once it runs
    std::array<StoreFile, kReaders> m_readFiles;  // a reader's each
    StoreFile::Contents m_contents;
    VariableId m_lastVariable = 0;
    WriterId m_lastWriter = kServerItself;

    std::mutex m_mutex;  // guards all below
    std::condition_variable m_work;
    std::condition_variable m_done;
    StoreQueue m_queue;
    std::deque<ReadJob> m_reads;
    bool m_writing = false;
    int m_reading = 0;  // readers that are at work
    StoreFigures m_figures;
    bool m_stuck = false;  // writing has failed for longer than a read waits
    bool m_stop = false;
    std::int64_t m_stopBy = 0;  // then no second transaction begins
    std::chrono::milliseconds m_failedSinceStop{0};
    std::string m_error;  // of the last attempt that failed

    std::thread m_writer;
    std::array<std::thread, kReaders> m_readers;
};

}  // namespace kalvex::server
