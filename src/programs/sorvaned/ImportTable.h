// The rows of a file that is imported, in the order of variables, kinds and times, however many
// there are: they lie in a file of the system's folder for such files, which goes with the object.
// One thread.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/Sqlite.h"
#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::sorvaned {

// Which values a row belongs to; the variable is a number of the caller's.
struct SeriesKey {
    std::int64_t variable = 0;
    value::ValueKind kind = value::KindNone;

    auto operator<=>(const SeriesKey&) const = default;
};

class ImportTable {
  public:
    // All are false when the file cannot be written or read; then GetFault has the words.
    bool Open();
    // `before` is the line of the row that has the same place already; then this one is not added.
    bool Add(const SeriesKey& series, const value::CVal& value, int line, bool isToWrite,
             std::optional<int>& before);
    // The next of the rows that are to be written. At the end `any` is false.
    bool Next(SeriesKey& series, value::CVal& value, bool& any);

    std::string GetFault() const { return m_database.ErrorText(); }  // UTF-8

  private:
    platform::SqliteDatabase m_database;
    platform::SqliteStatement m_add;
    platform::SqliteStatement m_find;
    platform::SqliteStatement m_list;
};

}  // namespace kalvex::sorvaned
