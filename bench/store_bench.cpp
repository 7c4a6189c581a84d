// The data server's store: archive rows and alarms written and acknowledged, a month of one-second
// values read in pieces, ranges out of ten million rows, a day of hours computed, a year of hours
// of a thousand variables, a year of minutes in a thousand points. Each row checks its answers, and
// the program fails when one is wrong or when the long read takes more memory than it may.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "checked_rows.h"
#include "raw_sqlite.h"
#include "server/PointScan.h"
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
constexpr std::int64_t kYearHours = 8760;
constexpr std::int64_t kYearStart = kStart - 2 * kYearHours * 3600;
constexpr int kYearVariables = 1000;
constexpr long kMostMemory = 200 * 1024;  // KB

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

    // Values in all, by queries that are under way at the same time, piece by piece.
    std::int64_t Count(std::vector<server::StoreQuery> queries) {
        std::int64_t count = 0;
        std::size_t left = queries.size();
        std::function<void(server::StoreQuery&)> read = [&](server::StoreQuery& query) {
            m_store.Read(query, [&](const server::StorePiece& piece) {
                Expect(piece.read, "piece");
                count += static_cast<std::int64_t>(piece.values.size());
                if (piece.more) {
                    query.from = piece.values.back().GetTime() + 1;
                    read(query);
                } else {
                    --left;
                }
            });
        };
        for (server::StoreQuery& query : queries) read(query);
        while (left > 0) m_loop.WaitAndRun();
        return count;
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
    RawSqlite raw;
    Expect(raw.Open(OpenStore::Folder()), "raw");
    for (auto _ : state) {
        Expect(raw.Write(next, state.range(0)), "raw rows");
        next += state.range(0);
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

// ---- years

// One row after another, as they stand in the file of a server that has run so long.
void FillReports(std::int64_t first, std::int64_t variables) {
    platform::SqliteDatabase database;
    platform::SqliteStatement put;
    Expect(database.Open(OpenStore::Folder() + "/store.sqlite") &&
               put.Prepare(database,
                           "INSERT INTO history (variable, kind, time, type, status, value) "
                           "VALUES (?, 2, ?, 171, 128, ?)"),
           "fill of reports");
    platform::SqliteTransaction transaction(database);
    for (std::int64_t variable = first; variable < first + variables; ++variable) {
        for (std::int64_t hour = 0; hour < kYearHours; ++hour) {
            put.BindInteger(1, variable);
            put.BindInteger(2, kStart + hour * 3600);
            put.BindReal(3, static_cast<double>(hour) + 0.25);
            Expect(put.Run(), "report row");
        }
    }
    Expect(transaction.Commit(), "commit of reports");
}

// The hours of a year of a thousand variables, all their values.
void ReadYearOfHours(benchmark::State& state) {
    OpenStore store;
    const server::VariableId first = store.Variable("R0");
    for (int i = 1; i < kYearVariables; ++i) store.Variable(("R" + std::to_string(i)).c_str());
    if (store.Read({first, value::KindHour, kStart, kStart, 1}).values.empty())
        FillReports(first, kYearVariables);
    for (auto _ : state) {
        std::vector<server::StoreQuery> queries;
        for (server::VariableId variable = first; variable < first + kYearVariables; ++variable) {
            queries.push_back({variable, value::KindHour, kStart, INT64_MAX, kPiece});
        }
        Expect(store.Count(std::move(queries)) == kYearVariables * kYearHours, "reports");
    }
    state.SetItemsProcessed(state.iterations() * kYearVariables * kYearHours);
}
BENCHMARK(ReadYearOfHours)->UseRealTime();

server::VariableId FillYearOfMinutes(OpenStore& store, bool isRolledUp) {
    const server::VariableId x = store.Variable(isRolledUp ? "Y1" : "Y0");
    if (!store.Read({x, value::KindArchive, kYearStart, INT64_MAX, 1}).values.empty()) return x;
    std::vector<server::StoreOperation> operations;
    for (std::int64_t minute = 0; minute < kYearHours * 60; ++minute) {
        operations.emplace_back(server::PutValue{x, value::KindArchive, kYearStart + minute * 60,
                                                 value::CVal(static_cast<double>(minute % 1440))});
        if (operations.size() == 18000 || minute + 1 == kYearHours * 60) {
            Expect(store.Submit(std::exchange(operations, {})), "fill");
        }
    }
    if (isRolledUp)
        Expect(store.Submit({server::RollUp{kYearStart + kYearHours * 3600, INT64_MAX}}),
               "rolling up");
    return x;
}

// In a thousand points: 1 with rollups, 0 without.
void ReadYearInPoints(benchmark::State& state) {
    OpenStore store;
    const server::VariableId x = FillYearOfMinutes(store, state.range(0) != 0);
    constexpr std::uint32_t kPoints = 1000;
    for (auto _ : state) {
        server::StoreQuery query{x, value::KindArchive, kYearStart, INT64_MAX, kPiece};
        query.scan = std::make_shared<server::PointScan>(
            server::HistoryKey{x, query.kind, query.from}, query.to, kPoints);
        std::vector<value::CVal> values;
        for (bool more = true; more;) {
            server::StorePiece piece = store.Read(query);
            Expect(piece.read, "piece of points");
            std::ranges::move(piece.values, std::back_inserter(values));
            more = piece.more;
        }
        Expect(values.size() > 900 && values.size() <= kPoints, "points of the year");
        Expect(values.back().GetTime() == kYearStart + (kYearHours * 60 - 1) * 60, "last point");
        Expect(std::ranges::count(values, value::CVal(1439.0)) >= 180, "largest values");
    }
}
BENCHMARK(ReadYearInPoints)->Arg(0)->Arg(1)->UseRealTime();

// Hours that are rolled up, of values of each second.
void RollUpHours(benchmark::State& state) {
    OpenStore store;
    const server::VariableId x = FillMonth(store);
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<server::StoreOperation> operations;
        for (std::int64_t hour = 0; hour < 24; ++hour) {
            operations.emplace_back(
                server::PutValue{x, value::KindArchive, kStart + hour * 3600, value::CVal(0.0)});
        }
        Expect(store.Submit(std::move(operations)), "marks");
        state.ResumeTiming();
        Expect(store.Submit({server::RollUp{kStart + 86400, INT64_MAX}}), "rolling up");
    }
    state.SetItemsProcessed(state.iterations() * 24);
}
BENCHMARK(RollUpHours)->UseRealTime();

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    const kalvex::support::ZoneScope zone("Europe/Warsaw");
    const kalvex::support::ScratchFolder folder;
    kalvex::bench::OpenStore::Folder() = folder.Path();
    return kalvex::bench::RunRows(argc, argv);
}
