// Keeps those who are not let in from filling the log: of each address one line a second, and how
// many there were besides. Main thread; times are seconds that never go back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::vantrel {

class Refusals {
  public:
    struct LeftOut {
        std::string address;  // empty: this machine
        std::size_t refusals = 0;
    };

    // Whether this line goes to the log; else it is counted.
    bool MayLog(const std::string& address, std::int64_t now);
    // What was left out before this second; it is told once.
    std::vector<LeftOut> TakeLeftOut(std::int64_t now);

  private:
    struct Row {
        std::int64_t logged = 0;
        std::size_t leftOut = 0;
    };

    std::map<std::string, Row> m_rows;
};

// A line of the log, an engine text.
std::string LeftOutLine(const Refusals::LeftOut& leftOut, const platform::Translator& translator);

}  // namespace kalvex::vantrel
