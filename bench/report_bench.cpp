// Reports on their whole way, from the lines of a script through a local socket to the store of a
// data server and back, and the telling of their changes to many clients.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "network_world.h"

namespace kalvex::bench {
namespace {

constexpr std::int64_t kHours = 100'000;
constexpr std::int64_t kChangedHours = 1000;
constexpr int kListeners = 100;
constexpr std::int64_t kSecondsPerHour = 3600;
constexpr std::int64_t kMonthBegin = 1709247600;                  // 2024-03-01 00:00:00 in Warsaw
constexpr std::int64_t kMonth = 31 * std::int64_t{86400} - 3600;  // the clocks go forward in it
constexpr std::int64_t kWrittenTogether = 200'000;

using SteadyTime = std::chrono::steady_clock::time_point;

SteadyTime Now() {
    return std::chrono::steady_clock::now();
}

double SecondsSince(SteadyTime begin) {
    return std::chrono::duration<double>(Now() - begin).count();
}

int ServeReports() {
    return ServePlant(
        "clients = 200\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nrt = 2\nvalue = 1\n"
        "[[variable]]\nname = \"Y\"\nrt = 2\nvalue = 1\n"
        "[[variable]]\nname = \"M\"\nat = 32\nvalue = 1\n");
}

// Round after round a script writes so many hours, of the value of the round, and reads them back.
// It waits for KROK before it writes and before it reads, and tells in ETAP how far it has come.
class Rounds {
  public:
    Rounds(const std::string& variable, std::int64_t hours)
        : m_hours(hours), m_module(Script(variable, hours)) {
        while (!m_module.Has("STAN")) m_module.Tick();
    }

    void Prepare() { Await(1); }
    void Write() { Step(1, 2); }
    void Read() { Step(2, 3); }

    // The list that was read is whole and has the value of the round.
    void Check() {
        ++m_round;
        auto& list = static_cast<operands::CVariableList&>(m_module.Variable("K"));
        Expect(static_cast<std::int64_t>(list.Elements().size()) == m_hours, "hours of a round");
        std::int64_t time = static_cast<std::int64_t>(m_module.Value("OD"));
        for (const value::CVal& value : list.Elements()) {
            const bool right = value.GetTime() == time && value == value::CVal(m_round);
            if (!right) return Expect(false, "an hour of a round");
            time += kSecondsPerHour;
        }
    }

    void Next() { Step(3, 0); }

  private:
    static std::string Script(const std::string& variable, std::int64_t hours) {
        const std::string length = std::to_string((hours - 1) * kSecondsPerHour);
        return "REMOTE x stacja@" + variable +
               "\nLIST L\nLIST K\nLOCAL OD = MAKE_TIME 2010\n"
               "LOCAL DO = OD + " +
               length +
               "\nLOCAL PRZED = OD - 1\nLOCAL PO = DO + 1\n"
               "LOCAL NUMER = 0\nLOCAL ETAP = 0\nLOCAL KROK = 0\nLOCAL STAN = x\n"
               ":obieg\nSET NUMER = NUMER + 1\nREMOVE_ALL L\n"
               "FILL_IN_LIST L NUMER 0 OD DO HREP\nSET ETAP = 1\n"
               ":zapis\nIF KROK != 1 GOTO zapis\nMPUT x HREP L\nGET x HREP DO\n"
               ":zapisane\nIF NOT READY x.HREP GOTO zapisane\nSET ETAP = 2\n"
               ":odczyt\nIF KROK != 2 GOTO odczyt\nMGET x HREP FROM PRZED TO PO\n"
               ":odczytane\nIF NOT READY x.HREP GOTO odczytane\nMGET x GETDATA K\nSET ETAP = 3\n"
               ":koniec\nIF KROK != 3 GOTO koniec\nSET ETAP = 0\nGOTO obieg\n";
    }

    void Step(int step, int stage) {
        m_module.Variable("KROK").SetValue(value::CVal(step), value::KindCurrent);
        Await(stage);
    }
    // A script that begins its next round passes over 0 within a tick.
    void Await(int stage) {
        while (m_module.Value("ETAP") != stage && (stage != 0 || m_module.Value("ETAP") != 1)) {
            m_module.Tick();
        }
    }

    std::int64_t m_hours;
    int m_round = 0;
    Module m_module;
};

class Listener final : public vantrel::CClientConnection {
  public:
    explicit Listener(vantrel::TransportFactory& transports) {
        Create(23, "stacja", "bench", transports, nullptr);
        RegisterVariable("Y");
        Subscribe();
    }

    bool HasData() const { return m_data; }
    std::int64_t Notice() const { return m_told; }

  protected:
    void OnDataArrived() override { m_data = true; }
    void OnReportChange(value::ValueKind, std::int64_t) override { ++m_told; }

  private:
    bool m_data = false;
    std::int64_t m_told = 0;
};

// The time from the first client that has been told of a change to the last that has been told of
// all. The server tells once a second, and the wait for that is not counted. The first row, since
// the changes that another one leaves behind would come to these clients too.
void ChangesToManyClients(benchmark::State& state) {
    Network network;
    std::vector<std::unique_ptr<Listener>> listeners;
    for (int i = 0; i < kListeners; ++i) {
        listeners.push_back(std::make_unique<Listener>(network.Transports()));
    }
    const auto all = [&](const auto& has) {
        return std::all_of(listeners.begin(), listeners.end(), has);
    };
    network.DeliverUntil(
        [&] { return all([](const auto& listener) { return listener->HasData(); }); });
    Rounds rounds("Y", kChangedHours);
    std::int64_t told = 0;
    for (auto _ : state) {
        rounds.Prepare();
        rounds.Write();
        network.DeliverUntil([&] {
            return !all([told](const auto& listener) { return listener->Notice() == told; });
        });
        const SteadyTime begin = Now();
        told += kChangedHours;
        network.DeliverUntil([&] {
            return all([told](const auto& listener) { return listener->Notice() >= told; });
        });
        state.SetIterationTime(SecondsSince(begin));
        Expect(all([told](const auto& listener) { return listener->Notice() == told; }),
               "changes that a client was told of");
        rounds.Read();
        rounds.Check();
        rounds.Next();
    }
    state.SetItemsProcessed(state.iterations() * kListeners * kChangedHours);
}
BENCHMARK(ChangesToManyClients)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

// A write is done when a read behind it is answered, since the server keeps their order.
void HoursOfAScript(benchmark::State& state) {
    Rounds rounds("X", kHours);
    double writing = 0;
    double reading = 0;
    for (auto _ : state) {
        rounds.Prepare();
        const SteadyTime begin = Now();
        rounds.Write();
        const SteadyTime written = Now();
        rounds.Read();
        reading += SecondsSince(written);
        writing += std::chrono::duration<double>(written - begin).count();
        state.SetIterationTime(SecondsSince(begin));
        rounds.Check();
        rounds.Next();
    }
    const double hours = static_cast<double>(state.iterations() * kHours);
    state.counters["written_a_second"] = hours / writing;
    state.counters["read_a_second"] = hours / reading;
    state.SetItemsProcessed(state.iterations() * kHours);
}
BENCHMARK(HoursOfAScript)->Unit(benchmark::kMillisecond)->Iterations(5)->UseManualTime();

// Fills the archive of the month with a value for each second, its number.
class Filler final : public vantrel::CClientConnection, private vantrel::AnswerWindow {
  public:
    explicit Filler(Network& network) : m_network(network) {
        Create(23, "stacja", "bench", network.Transports(), nullptr);
        network.DeliverUntil([this] { return GetState() == vantrel::StateConnected; });
        for (std::int64_t first = 0; first < kMonth; first += kWrittenTogether) Write(first);
    }

  private:
    // A write is done when a read behind it is answered.
    void Write(std::int64_t first) {
        value::CArchiveValueList list;
        const std::int64_t end = std::min(first + kWrittenTogether, kMonth);
        for (std::int64_t second = first; second < end; ++second) {
            value::CVal value(static_cast<double>(second));
            value.SetTime(kMonthBegin + second);
            list.Add(std::move(value));
        }
        AddArchiveModifyRequest("M", list, value::TIMEW{kMonthBegin + first},
                                value::TIMEW{kMonthBegin + end - 1});
        MakeArchiveModifyRequest();
        value::CArchiveValueList last;
        m_answered = false;
        AddDataRequest(value::KindArchive, "M", kMonthBegin + end - 1, kMonthBegin + end - 1, &last,
                       *this);
        MakeDataRequest(value::KindArchive);
        m_network.DeliverUntil([this] { return m_answered; });
        Expect(last.GetSize() == 1, "archive that is filled");
    }
    void OnAnswer(value::ValueKind, vantrel::RequestRecord) override { m_answered = true; }

    Network& m_network;
    bool m_answered = false;
};

// The script's thread goes on ticking while the values come in. The longest tick until the answer
// is complete tells how long it is held; the copy into a list is one line, with a time of its own.
void MonthOfAScript(benchmark::State& state) {
    Network network;
    Filler filler(network);
    for (auto _ : state) {
        Module module(
            "LOCAL ETAP = 0\nLOCAL KROK = 0\nREMOTE x stacja@M\nLIST K\nLOCAL STAN = x\n"
            "MGET x ARCH FROM 2024 2 29 23 59 59 TO 2024 4 1\nSET ETAP = 1\n"
            ":a\nIF NOT READY x.ARCH GOTO a\nSET ETAP = 2\n:b\nIF KROK < 1 GOTO b\n"
            "MGET x GETDATA K\nSET ETAP = 3\n");
        while (!module.Has("STAN")) module.Tick();
        const long before = Memory(::getpid());
        const SteadyTime begin = Now();
        double longest = 0;
        while (module.Value("ETAP") < 2) {
            const SteadyTime tick = Now();
            module.Tick();
            longest = std::max(longest, SecondsSince(tick));
        }
        state.SetIterationTime(SecondsSince(begin));
        state.counters["MB_of_the_answer"] =
            static_cast<double>(Memory(::getpid()) - before) / 1024;
        state.counters["longest_tick_ms"] = longest * 1000;
        module.Variable("KROK").SetValue(value::CVal(1), value::KindCurrent);
        double copy = 0;
        while (module.Value("ETAP") < 3) {
            const SteadyTime tick = Now();
            module.Tick();
            copy = std::max(copy, SecondsSince(tick));
        }
        state.counters["copy_ms"] = copy * 1000;
        const auto& values = static_cast<operands::CVariableList&>(module.Variable("K")).Elements();
        Expect(static_cast<std::int64_t>(values.size()) == kMonth, "values of the month");
        double next = 0;
        for (const value::CVal& value : values) {
            if (value.Real() != next++) return Expect(false, "a value of the month");
        }
    }
    state.SetItemsProcessed(state.iterations() * kMonth);
}
BENCHMARK(MonthOfAScript)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    kalvex::bench::BeginBench(argc, argv);
    {
        const kalvex::bench::Child plant(kalvex::bench::ServeReports);
        benchmark::RunSpecifiedBenchmarks();
    }
    return kalvex::bench::EndBench();
}
