// The data server's store: archive rows and alarms written and acknowledged, a month of one-second
// values read in pieces, ranges out of ten million rows, a day of hours computed. Each row checks
// its answers, and the program fails when one is wrong or when the long read takes more memory than
// it may.
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "checked_rows.h"
#include "server/Store.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"
#include "support/zone_scope.h"

namespace kalvex::bench {
namespace {

constexpr std::int64_t kMonth = 31 * std::int64_t{86400};  // seconds
constexpr std::int64_t kStart = 1709247600;                // 2024-03-01 00:00:00 in Warsaw
constexpr std::int64_t kPiece = 2000;
constexpr int kManyVariables = 100;
constexpr std::int64_t kManyRows = 100'000;  // of each of them
constexpr std::int64_t kManyPeriod = 10;     // seconds between two of them
constexpr long kMostMemory = 200 * 1024;     // KB

void Expect(bool right, const char* what) {
    if (!right) Wrong(std::string("wrong: ") + what);
}

class OpenStore {
  public:
    OpenStore() {
        platform::Notice error;
        Expect(m_store.Open(Folder() + "/store.sqlite", error), "the store must open");
    }

    static std::string& Folder() {
        static std::string folder;
        return folder;
    }

    bool Submit(std::vector<server::StoreOperation> operations) {
        bool answered = false;
        const bool taken = m_store.Submit(std::move(operations), server::Store::Urgency::Now,
                                          [&](const server::StoreOutcome&) { answered = true; });
        while (taken && !answered) m_loop.WaitAndRun();
        return taken;
    }

    server::StorePiece Read(const server::StoreQuery& query) {
        server::StorePiece answer;
        bool answered = false;
        m_store.Read(query, [&](server::StorePiece piece) {
            answer = std::move(piece);
            answered = true;
        });
        while (!answered) m_loop.WaitAndRun();
        return answer;
    }

    server::VariableId Variable(const char* name) { return m_store.Register(name); }

  private:
    support::WaitingLoop m_loop;
    server::Store m_store{m_loop};
};

std::vector<server::StoreOperation> Rows(server::VariableId variable, std::int64_t first,
                                         std::int64_t count, double number,
                                         const server::Origin& origin) {
    std::vector<server::StoreOperation> operations;
    for (std::int64_t time = first; time < first + count; ++time) {
        operations.emplace_back(
            server::PutValue{variable, value::KindArchive, time, value::CVal(number), origin});
    }
    return operations;
}

// One transaction of so many rows each time, each behind the last one.
void WriteRows(benchmark::State& state, const char* name, const server::Origin& origin) {
    static std::int64_t next = 0;
    OpenStore store;
    const server::VariableId x = store.Variable(name);
    for (auto _ : state) {
        Expect(store.Submit(Rows(x, next, state.range(0), 0.5, origin)), "write");
        next += state.range(0);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void WriteArchive(benchmark::State& state) {
    WriteRows(state, "W", {});
}
BENCHMARK(WriteArchive)->Arg(1)->Arg(1000)->Arg(10000)->UseRealTime();

// The same with who wrote it.
void WriteArchiveOfClient(benchmark::State& state) {
    WriteRows(state, "C", {1, kStart});
}
BENCHMARK(WriteArchiveOfClient)->Arg(1)->Arg(1000)->Arg(10000)->UseRealTime();

// Each row in the place of another one, which stays as a version.
void CorrectArchive(benchmark::State& state) {
    OpenStore store;
    const server::VariableId x = store.Variable("K");
    double number = 0;
    for (auto _ : state) {
        Expect(store.Submit(Rows(x, 0, state.range(0), ++number, {1, kStart})), "correct");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CorrectArchive)->Arg(10000)->UseRealTime();

// So many alarms begin, are acknowledged and end, in a transaction each.
void WriteAlarms(benchmark::State& state) {
    OpenStore store;
    std::vector<server::VariableId> variables;
    for (std::int64_t index = 0; index < state.range(0); ++index) {
        variables.push_back(store.Variable(("A" + std::to_string(index)).c_str()));
    }
    static server::AlarmId last = 0;
    for (auto _ : state) {
        std::vector<server::StoreOperation> begin;
        std::vector<server::StoreOperation> acknowledge;
        std::vector<server::StoreOperation> end;
        for (const server::VariableId variable : variables) {
            begin.emplace_back(
                server::BeginAlarm{++last, variable, server::AlarmStage::High, kStart, 12.5});
            acknowledge.emplace_back(server::AcknowledgeAlarms{variable, {1, kStart}});
            end.emplace_back(server::EndAlarm{last, kStart});
        }
        for (auto* operations : {&begin, &acknowledge, &end}) {
            Expect(store.Submit(std::move(*operations)), "alarms");
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WriteAlarms)->Arg(10000)->UseRealTime();

// What the library alone takes for the same rows without who wrote them.
void WriteRawSqlite(benchmark::State& state) {
    static std::int64_t next = 0;
    platform::SqliteDatabase database;
    platform::SqliteStatement put;
    Expect(database.Open(OpenStore::Folder() + "/raw.sqlite") &&
               database.Execute(
                   "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA cache_size = "
                   "-16000; CREATE TABLE IF NOT EXISTS history (variable INTEGER NOT NULL, kind "
                   "INTEGER NOT NULL, time INTEGER NOT NULL, type INTEGER NOT NULL, status INTEGER "
                   "NOT NULL, value, PRIMARY KEY (variable, kind, time)) WITHOUT ROWID;") &&
               put.Prepare(database, "INSERT OR REPLACE INTO history VALUES (1, 6, ?, 171, 0, ?)"),
           "raw");
    for (auto _ : state) {
        platform::SqliteTransaction transaction(database);
        for (std::int64_t row = 0; row < state.range(0); ++row) {
            put.BindInteger(1, next++);
            put.BindReal(2, 0.5);
            Expect(put.Run(), "raw row");
        }
        Expect(transaction.Commit(), "raw commit");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WriteRawSqlite)->Arg(1)->Arg(1000)->Arg(10000)->UseRealTime();

server::VariableId FillMonth(OpenStore& store) {
    const server::VariableId x = store.Variable("M");
    const server::StorePiece last =
        store.Read({x, value::KindArchive, kStart + kMonth - 1, kStart + kMonth, 1});
    if (!last.values.empty()) return x;
    std::vector<server::StoreOperation> operations;
    for (std::int64_t second = 0; second < kMonth; ++second) {
        value::CVal value(static_cast<double>(second % 3600));
        operations.emplace_back(
            server::PutValue{x, value::KindArchive, kStart + second, std::move(value)});
        if (operations.size() < 50000 && second + 1 < kMonth) continue;
        Expect(store.Submit(std::exchange(operations, {})), "fill");
    }
    return x;
}

long MostMemory() {
    rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void ReadMonth(benchmark::State& state) {
    OpenStore store;
    const server::VariableId x = FillMonth(store);
    for (auto _ : state) {
        std::int64_t count = 0;
        server::StoreQuery query{x, value::KindArchive, kStart, kStart + kMonth - 1, kPiece};
        for (bool more = true; more;) {
            const server::StorePiece piece = store.Read(query);
            count += static_cast<std::int64_t>(piece.values.size());
            more = piece.more;
            if (more) query.from = piece.values.back().GetTime() + 1;
        }
        Expect(count == kMonth, "values of the month");
    }
    state.SetItemsProcessed(state.iterations() * kMonth);
    state.counters["most_memory_MB"] = static_cast<double>(MostMemory()) / 1024;
    Expect(MostMemory() < kMostMemory, "memory");
}
BENCHMARK(ReadMonth)->UseRealTime();

// Row number n of each variable has the value n.
std::vector<server::VariableId> FillTenMillion(OpenStore& store) {
    std::vector<server::VariableId> variables;
    for (int i = 0; i < kManyVariables; ++i) {
        variables.push_back(store.Variable(("T" + std::to_string(i)).c_str()));
    }
    const server::StorePiece last =
        store.Read({variables.back(), value::KindArchive, kStart, INT64_MAX, 1});
    if (!last.values.empty()) return variables;
    for (const server::VariableId variable : variables) {
        std::vector<server::StoreOperation> operations;
        for (std::int64_t row = 0; row < kManyRows; ++row) {
            operations.emplace_back(server::PutValue{variable, value::KindArchive,
                                                     kStart + row * kManyPeriod,
                                                     value::CVal(static_cast<double>(row))});
        }
        Expect(store.Submit(std::move(operations)), "fill");
    }
    return variables;
}

// So many rows from any place, in as many pieces as that takes.
void ReadRanges(benchmark::State& state) {
    OpenStore store;
    const std::vector<server::VariableId> variables = FillTenMillion(store);
    const std::int64_t rows = state.range(0);
    std::minstd_rand random(1);
    for (auto _ : state) {
        const std::int64_t first = static_cast<std::int64_t>(random()) % (kManyRows - rows);
        server::StoreQuery query{variables[random() % variables.size()], value::KindArchive,
                                 kStart + first * kManyPeriod,
                                 kStart + (first + rows - 1) * kManyPeriod, kPiece};
        std::int64_t next = first;
        for (bool more = true; more;) {
            const server::StorePiece piece = store.Read(query);
            for (const value::CVal& value : piece.values) {
                if (value.Real() != static_cast<double>(next++)) Expect(false, "row of a range");
            }
            more = piece.more;
            if (more) query.from = piece.values.back().GetTime() + 1;
        }
        Expect(next == first + rows, "rows of a range");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadRanges)->Arg(1)->Arg(360)->Arg(8640)->UseRealTime();

// The mean of 0, 1, ..., 3599 is 1799.5.
void ComputeDayOfHours(benchmark::State& state) {
    OpenStore store;
    const server::VariableId x = FillMonth(store);
    for (auto _ : state) {
        std::vector<server::StoreOperation> operations;
        for (std::int64_t hour = 0; hour < 24; ++hour) {
            operations.emplace_back(server::MakeReport{vantrel::PeriodAction::Calculate, x,
                                                       value::KindHour, kStart + hour * 3600,
                                                       server::ReportRule::Mean, 0});
        }
        Expect(store.Submit(std::move(operations)), "computing");
    }
    for (const value::CVal& value :
         store.Read({x, value::KindHour, kStart, kStart + 86399, 24}).values) {
        Expect(value.Real() == 1799.5, "mean");
    }
    state.SetItemsProcessed(state.iterations() * 24);
}
BENCHMARK(ComputeDayOfHours)->UseRealTime();

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    const kalvex::support::ZoneScope zone("Europe/Warsaw");
    const kalvex::support::ScratchFolder folder;
    kalvex::bench::OpenStore::Folder() = folder.Path();
    return kalvex::bench::RunRows(argc, argv);
}
