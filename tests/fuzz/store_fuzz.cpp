// The store of a data server, which somebody else may have written: it can be refused, and
// whatever it holds can be read, written to and computed with.
#include <filesystem>
#include <limits>
#include <memory>

#include "fuzz/fuzz.h"
#include "server/PointScan.h"
#include "server/StoreFile.h"
#include "support/scratch_folder.h"
#include "support/zone_scope.h"

namespace kalvex::fuzz {

namespace {

using server::PutValue;
using server::StoreOperation;

constexpr const char* kFile = "store.sqlite";
constexpr const char* kBeside[] = {"store.sqlite-wal", "store.sqlite-shm", "store.sqlite-journal",
                                   "store.sqlite.v1", "store.sqlite.v2"};
constexpr std::int64_t kHour = 1710068400;
constexpr value::ValueKind kKinds[] = {value::KindHour, value::KindDay, value::KindMonth,
                                       value::KindArchive};
constexpr std::int64_t kMostValues = 50;

const std::vector<StoreOperation> kOperations = {
    PutValue{1, value::KindArchive, kHour, value::CVal(1.5)},
    PutValue{1, value::KindArchive, kHour + 60, value::CVal(2)},
    PutValue{2, value::KindArchive, kHour, value::CVal(std::string_view("tekst"))},
    PutValue{1, value::KindHour, kHour, value::CVal(7.5)},
    server::SaveLastValue{2, value::CVal(std::string_view("x"))},
    server::MarkGap{1, kHour + 90, kHour + 120},
    server::MakeReport{vantrel::PeriodAction::Calculate, 1, value::KindHour, kHour},
    server::MakeReport{vantrel::PeriodAction::Calculate, 1, value::KindDay, kHour},
    server::SaveProgress{"x", kHour},
    server::RollUp{kHour + 7200, 1000},
    server::RemoveArchive{1, kHour},
};

void Write(server::StoreFile& file) {
    server::StoreBatch batch{{server::SaveName{1, "A"}, server::SaveName{2, "B"}}, {kOperations}};
    std::vector<server::StoreOutcome> outcomes;
    std::string error;
    const bool written = file.Write(batch, outcomes, error);
    Demand(written == error.empty(), "what is not written has a reason");
}

std::string Written() {
    const support::ScratchFolder folder;
    {
        server::StoreFile file;
        platform::Notice error;
        Demand(file.Open(folder.Path(kFile), error), "the store must open");
        Write(file);
    }
    return folder.Get(kFile);
}

void ReadPoints(server::StoreFile& file, const server::HistoryKey& from) {
    server::StoreQuery query{from.variable, from.kind};
    query.scan = std::make_shared<server::PointScan>(from, std::numeric_limits<std::int64_t>::max(),
                                                     server::kFewestPoints);
    server::StorePiece piece;
    std::size_t values = 0;
    do {
        piece = file.ReadRange(query);
        values += piece.values.size();
    } while (piece.more);
    Demand(values <= server::kFewestPoints, "there are no more points than were asked for");
}

void Read(server::StoreFile& file) {
    server::StoreFile::Contents contents;
    if (!file.ReadContents(contents)) return;
    for (const auto& [name, variable] : contents.variables) {
        for (const value::ValueKind kind : kKinds) {
            const server::StorePiece piece =
                file.ReadRange({variable, kind, 0, value::kLargestTime, kMostValues});
            Demand(piece.values.size() <= static_cast<std::size_t>(kMostValues),
                   "a piece is bounded");
            ReadPoints(file, {variable, kind, std::numeric_limits<std::int64_t>::min()});
        }
    }
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    return {"", Written()};
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::support::ZoneScope zone("Europe/Warsaw");
    static const kalvex::support::ScratchFolder folder;
    for (const char* name : kalvex::fuzz::kBeside) std::filesystem::remove(folder.Path(name));
    const std::string path = folder.Put(kalvex::fuzz::kFile, kalvex::fuzz::Bytes(data, size));
    kalvex::server::StoreFile file;
    kalvex::platform::Notice error;
    if (!file.Open(path, error)) {
        kalvex::fuzz::Demand(static_cast<bool>(error), "what is refused has a reason");
        return 0;
    }
    kalvex::fuzz::Read(file);
    kalvex::fuzz::Write(file);
    kalvex::fuzz::Read(file);
    return 0;
}
