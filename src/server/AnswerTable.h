// The part of the store's file that keeps the answers to writes with a serial. Belongs to one
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Sqlite.h"

namespace kalvex::server {

// To go with what the write does, in one transaction.
struct SaveAnswer {
    std::string token;
    std::uint64_t serial = 0;
    std::int64_t number = 0;  // ascending, of all answers
    std::uint16_t result = 0;
};

struct DropAnswers {
    std::string token;
    std::uint64_t serial = 0;  // 0: all of the token
};

class AnswerTable {
  public:
    static const char* Schema();
    bool Prepare(platform::SqliteDatabase& database);

    // All of them, by their numbers.
    bool Read(platform::SqliteDatabase& database, std::vector<SaveAnswer>& answers) const;

    // Within a transaction of the caller's. False when the file fails.
    bool Run(const SaveAnswer& operation);
    bool Run(const DropAnswers& operation);

  private:
    platform::SqliteStatement m_put;
    platform::SqliteStatement m_drop;
    platform::SqliteStatement m_dropAll;
};

}  // namespace kalvex::server
