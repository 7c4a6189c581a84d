// A process that runs inputs, watched by another one: whatever ends it, and be it the lack of an
// end, the input that was running is kept.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace kalvex::fuzz {

// What the process that runs tells the other one.
class Progress {
  public:
    // Before an input runs, of 1 MiB at most, and behind it.
    void Begin(const std::string& input);
    void End() { ++m_inputs; }

    std::uint64_t Inputs() const { return m_inputs; }
    std::string Running() const { return {m_bytes, m_size}; }

  private:
    static constexpr std::size_t kMostBytes = std::size_t{1} << 20;

    std::atomic<std::uint64_t> m_inputs = 0;
    std::atomic<std::size_t> m_size = 0;
    char m_bytes[kMostBytes] = {};
};

// Runs the work in a process of its own. Answers with the status of this one: 0 when the work has
// come to its end, and 1 when it has not, or an input took longer than `patience`; then `keep` is
// the file of that input, and the reason is told on standard error.
int RunWatched(const std::function<void(Progress&)>& work, std::chrono::seconds patience,
               const std::string& keep);

}  // namespace kalvex::fuzz
