// Lines to a descriptor whose reader may be slow, stand still or go away, from a thread of its own:
// whoever has a line to write never waits.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kalvex::platform {

class LineWriter {
  public:
    // That wait at most, whichever comes first.
    static constexpr std::size_t kLines = 10000;
    static constexpr std::size_t kBytes = 8 << 20;

    // The line that stands where so many are missing, without its end; called on the writer's
    // thread.
    using GapText = std::function<std::string(std::uint64_t lost)>;

    // The descriptor is not owned.
    LineWriter(int descriptor, GapText gapText);
    // Waits until all is written, but no longer than `Finish` allows.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    // A line without its end. One for which there is no place, or that cannot be written, is lost
    // and counted; the count stands in its place as soon as lines can be written again.
    void Write(std::string line);

    // No line is taken any more. Waits for what waits; what could not be written in so much time is
    // lost. Two seconds where nobody has called this.
    void Finish(std::chrono::milliseconds patience);

  private:
    class Work;

    std::shared_ptr<Work> m_work;  // shared with a thread that is left behind when it hangs
};

}  // namespace kalvex::platform
