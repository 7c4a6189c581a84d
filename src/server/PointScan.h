// A range of stored values thinned to so many that its course can be seen: real values at their
// times. One step reads a bounded number of rows, so that other reads take their turns. Belongs to
// one thread at a time.
//
// A range of no more values than were asked for comes whole. Of any other come the first and the
// last value, and of each of equal pieces of time, half as many as values were asked for, the
// smallest and the largest number (of equal ones the earliest), the last text and the last gap.
// Where texts and gaps make that too many, two pieces in a row become one. A piece is of whole
// minutes from ten minutes on, and of whole hours from ten hours on. That is the same whether hours
// are rolled up or not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "server/HistoryTable.h"
#include "server/RollupTable.h"

namespace kalvex::server {

inline constexpr std::uint32_t kFewestPoints = 8;
inline constexpr std::uint32_t kMostPoints = 10000;

class PointScan {
  public:
    // From kFewestPoints to kMostPoints; the bounds of the range are included.
    PointScan(const HistoryKey& from, std::int64_t to, std::uint32_t points);

    // The next piece of the answer, without values while the range is still being looked through.
    StorePiece Step(HistoryTable& history, RollupTable& rollups);

  private:
    enum class Stage : std::uint8_t { Begin, LookThrough, Tell };

    bool Begin(RollupTable& rollups);
    void SetPieces(std::int64_t first, std::int64_t last);
    bool LookThrough(RollupTable& rollups);
    bool TakeHours(RollupTable& rollups, std::int64_t& rows);
    bool TakeHour(RollupTable& rollups, const Rollup& hour, std::int64_t& rows);
    bool TakePoints(RollupTable& rollups, std::int64_t to, std::int64_t& rows);
    bool TakesWhole(std::int64_t from, std::int64_t span) const;
    Extremes& PieceOf(std::int64_t time);
    void Choose();
    void JoinPieces();
    void ChooseTimes();
    StorePiece Tell(HistoryTable& history);

    const HistoryKey m_from;
    const std::int64_t m_to;
    const std::uint32_t m_most;
    Stage m_stage = Stage::Begin;
    std::int64_t m_first = 0;  // times of the first and the last value
    std::int64_t m_last = 0;
    std::int64_t m_origin = 0;  // where the first piece begins
    std::int64_t m_width = 1;
    std::int64_t m_next = 0;  // all before has been looked through
    std::vector<Extremes> m_pieces;
    std::vector<std::int64_t> m_times;  // of the values to be told
    std::size_t m_told = 0;
    std::vector<StoredPoint> m_read;
};

}  // namespace kalvex::server
