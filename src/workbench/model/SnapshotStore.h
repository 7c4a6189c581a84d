// The versions of scripts as they were saved, beside each script in a hidden folder:
// .kalvex-history/NAME.kx/NUMBER-TIME.kx. Paths are the system's (UTF-8). Main thread.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::workbench {

struct Snapshot {
    std::string file;        // full path
    std::int64_t time = 0;   // when it was saved, seconds since 1970 GMT
    std::uint64_t size = 0;  // in bytes
};

class SnapshotStore {
  public:
    static constexpr std::size_t kKept = 50;

    // Keeps what has been saved at `script` as its newest version, unless it is the newest version
    // already, and removes the oldest beyond those that are kept. A fault, such as a full disk,
    // harms nothing; it is told once a script, and again when it comes after a success.
    platform::Notice Keep(const std::string& script, std::string_view content, std::int64_t now);

    // Newest first.
    static std::vector<Snapshot> List(const std::string& script);
    // False with the system's words in `error`.
    static bool Read(const Snapshot& snapshot, std::string& content, std::string& error);

  private:
    std::set<std::string> m_told;  // scripts whose last version could not be kept
};

}  // namespace kalvex::workbench
