// A data server as large as one gets: a million variables defined, subscribed and stored, and
// archive values from a client to the disk, beside what SQLite alone takes for the same rows.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "network_world.h"
#include "platform/Files.h"
#include "raw_sqlite.h"
#include "value/ValueText.h"
#include "vantrel/ClientConnection.h"

namespace kalvex::bench {
namespace {

constexpr int kMillion = 1'000'000;
constexpr std::size_t kMostWaiting = 20'000;  // writes without an answer
constexpr std::int64_t kBegin = 1709247600;   // 2024-03-01 00:00:00 in Warsaw
constexpr std::int64_t kBatches = 100;
constexpr double kLongestStart = 60;  // seconds

using SteadyTime = std::chrono::steady_clock::time_point;

SteadyTime Now() {
    return std::chrono::steady_clock::now();
}

double SecondsSince(SteadyTime begin) {
    return std::chrono::duration<double>(Now() - begin).count();
}

std::string NameOf(int variable) {
    return "V" + std::to_string(variable);
}

int ServeMillion() {
    std::string text = "name\tun\tat\tvalue\n";
    for (int i = 0; i < kMillion; ++i) text += NameOf(i) + "\tm3/h\t2\t" + std::to_string(i) + '\n';
    std::string error;
    platform::WriteWholeFile(Folder() + "/variables.csv", text, error);
    return ServePlant(
        "data = \"data\"\nvariables = 1000000\n[[access]]\nwrite = \"0\"\n[[variables]]\nfile = "
        "\"variables.csv\"\n");
}

int ServeArchive() {
    return ServePlant(
        "data = \"archive-data\"\n[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"A\"\nat = "
        "32\n");
}

class Client final : public vantrel::CClientConnection {
  public:
    explicit Client(Network& network) : m_network(network) {
        Create(23, "stacja", "bench", network.Transports(), nullptr);
        m_network.DeliverUntil([&] { return m_connected; });
    }

    void SubscribeMillion() {
        for (int i = 0; i < kMillion; ++i) RegisterVariable(NameOf(i));
        Subscribe();
        m_network.DeliverUntil([&] { return m_data; });
    }

    // Of all variables, so much more than their numbers.
    bool HasValues(int more) const {
        for (; m_good < kMillion; ++m_good) {
            if (value::ValueToDouble(GetVarVal(m_good).Value()) != m_good + more) return false;
        }
        m_good = 0;
        return true;
    }

    void WriteMillion(int more) {
        for (int i = 0; i < kMillion; ++i) {
            AddCurrentDataModifyRequest(NameOf(i), value::CVal(i + more));
            if (i % 1000 != 999) continue;
            MakeCurrentDataModifyRequest();
            m_network.DeliverUntil([&] { return WritesWaiting() < kMostWaiting; });
        }
        m_network.DeliverUntil([&] { return WritesWaiting() == 0; });
    }

    void WriteArchive(std::int64_t first, std::int64_t count) {
        value::CArchiveValueList list;
        for (std::int64_t time = first; time < first + count; ++time) {
            value::CVal value(0.5);
            value.SetTime(time);
            list.Add(std::move(value));
        }
        AddArchiveModifyRequest("A", list, value::TIMEW{first}, value::TIMEW{first + count - 1});
        MakeArchiveModifyRequest();
    }

    int Refused() const { return m_refused; }

  protected:
    void OnConnect() override { m_connected = true; }
    void OnDataArrived() override { m_data = true; }
    void OnCurrentDataModifyError(const vantrel::RequestRecord&) override { ++m_refused; }
    void OnArchiveModifyError(const vantrel::RequestRecord&) override { ++m_refused; }
    void OnOrderLost(const vantrel::LostOrder&) override { ++m_refused; }

  private:
    Network& m_network;
    bool m_connected = false;
    bool m_data = false;
    int m_refused = 0;
    mutable int m_good = 0;  // variables that have been seen to be right
};

std::int64_t StoredRows(const std::string& folder, const std::string& table) {
    platform::SqliteDatabase database;
    platform::SqliteStatement count;
    const bool read = database.OpenExisting(Folder() + '/' + folder + "/store.sqlite") &&
                      count.Prepare(database, ("SELECT count(*) FROM " + table).c_str()) &&
                      count.Next();
    return read ? count.Integer(0) : -1;
}

void Pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void AwaitListening() {
    const auto begin = Now();
    while (!std::filesystem::exists(Folder() + "/stacja")) {
        Pause();
        if (SecondsSince(begin) < kLongestStart) continue;
        Expect(false, "a server that listens");
        std::exit(EXIT_FAILURE);
    }
}

// A server that begins when it is told to, since none can be made once there are threads.
class Prepared {
  public:
    explicit Prepared(std::string name, int (*serve)())
        : m_name(std::move(name)), m_child([this, serve] {
              while (!std::filesystem::exists(Place())) Pause();
              return serve();
          }) {}

    pid_t Process() const { return m_child->Process(); }
    // The time until it listens.
    double Begin() const {
        const auto begin = Now();
        std::string error;
        platform::WriteWholeFile(Place(), "", error);
        AwaitListening();
        return SecondsSince(begin);
    }
    void End() { m_child.reset(); }

  private:
    std::string Place() const { return Folder() + '/' + m_name; }

    std::string m_name;
    std::optional<Child> m_child;
};

Prepared* g_million = nullptr;
Prepared* g_again = nullptr;
Prepared* g_archive = nullptr;

void Million(benchmark::State& state) {
    for (auto _ : state) {
        state.counters["start_s"] = g_million->Begin();
        {
            Network network;
            Client client(network);
            auto begin = Now();
            client.SubscribeMillion();
            state.counters["subscribe_s"] = SecondsSince(begin);
            begin = Now();
            client.WriteMillion(kMillion);
            state.counters["store_s"] = SecondsSince(begin);
            network.DeliverUntil([&] { return client.HasValues(kMillion); });
            Expect(client.Refused() == 0, "writes that were taken");
            state.counters["server_MB"] = static_cast<double>(Memory(g_million->Process())) / 1024;
        }
        g_million->End();
        Expect(StoredRows("data", "variables") == kMillion, "stored variables");
        Expect(StoredRows("data", "last_values") == kMillion, "stored current values");
        Expect(StoredRows("data", "history WHERE writer <> 0") == kMillion, "archive values");
        state.counters["start_again_s"] = g_again->Begin();
        {
            Network network;
            Client client(network);
            client.SubscribeMillion();
            Expect(client.HasValues(kMillion), "values that are stored");
        }
        g_again->End();
    }
}
BENCHMARK(Million)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

// From a client's list to the acknowledgement of all of it, in batches of so many.
void ArchiveOfClient(benchmark::State& state) {
    static std::int64_t next = kBegin;
    if (next == kBegin) g_archive->Begin();
    Network network;
    Client client(network);
    const std::int64_t first = next;
    for (auto _ : state) {
        for (std::int64_t batch = 0; batch < kBatches; ++batch) {
            client.WriteArchive(next, state.range(0));
            next += state.range(0);
            network.DeliverUntil([&] { return client.WritesWaiting() < 10; });
        }
        network.DeliverUntil([&] { return client.WritesWaiting() == 0; });
    }
    Expect(client.Refused() == 0, "archives that were taken");
    const std::string rows = "history WHERE time >= " + std::to_string(first);
    Expect(StoredRows("archive-data", rows) == next - first, "archive values");
    state.SetItemsProcessed(next - first);
}
BENCHMARK(ArchiveOfClient)->Arg(1000)->Arg(10000)->Iterations(5)->UseRealTime();

// What the library alone takes for the same rows, without who wrote them.
void RawArchive(benchmark::State& state) {
    static std::int64_t next = kBegin;
    RawSqlite raw;
    Expect(raw.Open(Folder()), "raw");
    const std::int64_t first = next;
    for (auto _ : state) {
        for (std::int64_t batch = 0; batch < kBatches; ++batch, next += state.range(0)) {
            Expect(raw.Write(next, state.range(0)), "raw rows");
        }
    }
    state.SetItemsProcessed(next - first);
}
BENCHMARK(RawArchive)->Arg(1000)->Arg(10000)->Iterations(5)->UseRealTime();

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    using namespace kalvex::bench;
    BeginBench(argc, argv);
    {
        Prepared million("million", ServeMillion);
        Prepared again("again", ServeMillion);
        Prepared archive("archive", ServeArchive);
        g_million = &million;
        g_again = &again;
        g_archive = &archive;
        benchmark::RunSpecifiedBenchmarks();
    }
    return EndBench();
}
