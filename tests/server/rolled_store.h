// The file of a store in the hands of a test: what is written is there when the call ends.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/Sqlite.h"
#include "server/PointScan.h"
#include "server/StoreFile.h"
#include "support/scratch_folder.h"

namespace kalvex::server {

class RolledStoreTest : public testing::Test {
  protected:
    static constexpr VariableId kX = 1;
    static constexpr std::int64_t kEnough = 1'000'000'000;

    RolledStoreTest() { Open(); }

    void Open() {
        m_file = std::make_unique<StoreFile>();
        platform::Notice error;
        ASSERT_TRUE(m_file->Open(m_path, error));
    }

    StoreOutcome Write(std::vector<StoreOperation> operations) {
        std::vector<StoreOutcome> outcomes;
        std::string error;
        EXPECT_TRUE(m_file->Write({{}, {operations}}, outcomes, error)) << error;
        return outcomes.at(0);
    }

    // At the time; UNKNOWN without a number.
    static PutValue At(std::int64_t time, value::CVal value, std::uint16_t status = 0,
                       VariableId variable = kX) {
        value.SetStatus(status);
        value.SetTime(time);
        return {variable, value::KindArchive, time, std::move(value)};
    }

    // One value of its own number at each step from `from` on.
    void Fill(std::int64_t from, std::int64_t step, int count, VariableId variable = kX) {
        std::vector<StoreOperation> operations;
        for (int i = 0; i < count; ++i) {
            operations.emplace_back(At(from + i * step, value::CVal(double(i)), 0, variable));
        }
        Write(std::move(operations));
    }

    StoreOutcome RollUpTo(std::int64_t now, std::int64_t values = kEnough) {
        return Write({RollUp{now, values}});
    }

    std::vector<value::CVal> ReadAll(const StoreQuery& query) {
        std::vector<value::CVal> values;
        StorePiece piece;
        do {
            piece = m_file->ReadRange(query);
            EXPECT_TRUE(piece.read);
            EXPECT_LE(piece.values.size(), 2000u);
            std::ranges::move(piece.values, std::back_inserter(values));
        } while (piece.more);
        return values;
    }

    std::vector<value::CVal> Points(std::int64_t from, std::int64_t to, std::uint32_t points,
                                    VariableId variable = kX,
                                    value::ValueKind kind = value::KindArchive) {
        StoreQuery query{variable, kind, from, to, 0};
        query.scan = std::make_shared<PointScan>(HistoryKey{variable, kind, from}, to, points);
        return ReadAll(query);
    }

    // The rows, with blanks between columns and "-" for what is not there.
    std::vector<std::string> Rows(const char* sql, int columns) {
        platform::SqliteDatabase database;
        platform::SqliteStatement select;
        EXPECT_TRUE(database.OpenExisting(m_path) && select.Prepare(database, sql));
        std::vector<std::string> rows;
        while (select.Next()) {
            std::string& row = rows.emplace_back();
            for (int column = 0; column < columns; ++column) {
                if (column > 0) row += ' ';
                row += select.IsNull(column) ? "-" : select.Text(column);
            }
        }
        return rows;
    }

    std::vector<std::string> Hours() {
        return Rows("SELECT variable, time, count FROM rollups WHERE span = 3600", 3);
    }
    std::vector<std::string> Marks() { return Rows("SELECT hour, variable FROM rollup_marks", 2); }

    // By another program.
    void Execute(const char* sql) {
        platform::SqliteDatabase database;
        ASSERT_TRUE(database.OpenExisting(m_path) && database.Execute(sql)) << database.ErrorText();
    }

    support::ScratchFolder m_folder;
    const std::string m_path = m_folder.Path("store.sqlite");
    std::unique_ptr<StoreFile> m_file;
};

}  // namespace kalvex::server
