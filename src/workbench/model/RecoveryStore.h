// Copies of texts that are not saved, for the case that the session or the process ends before they
// are. A folder of its own holds them, a file each; files of more than one process there must have
// keys of their own. Paths and keys are UTF-8, texts are engine texts. Main thread; `elapsed` is in
// milliseconds of a clock that goes at an even pace, other times in seconds since 1970 GMT.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::workbench {

struct RecoveryCopy {
    std::string key;
    std::string text;
    std::int64_t time = 0;  // when it was written
    // The script's file is another one than that which was changed: both have something of their
    // own.
    bool fileChanged = false;
};

struct RecoveryOffer {
    std::optional<RecoveryCopy> copy;  // to be offered
    platform::Notice fault = {};       // there is one and it cannot be used
};

class RecoveryStore {
  public:
    static constexpr std::int64_t kPause = 5000;  // between two writes of a text

    explicit RecoveryStore(std::string folder) : m_folder(std::move(folder)) {}

    // The key of a script with a file is its full path; that of one never saved bears its title and
    // when it was opened, so that it is not taken for the one of another session.
    static std::string KeyOfNew(std::string_view title, std::int64_t opened);
    static bool IsKeyOfNew(std::string_view key) { return !key.starts_with('/'); }
    static std::string TitleOfNew(std::string_view key);

    // Whether it is time to write the modified text, which is not cheap to get; asked again and
    // again while it is modified.
    bool IsDue(const std::string& key, std::int64_t elapsed) const;
    // Writes it, unless it is the text of the last time. `saved` is the content of the script's
    // file as the editor has read or written it, nothing for a script that has none. A fault is
    // told once a script.
    platform::Notice Keep(const std::string& key, std::string_view text,
                          std::optional<std::string_view> saved, std::int64_t now,
                          std::int64_t elapsed);
    // It has been saved, or closed without: the copy goes.
    void Drop(const std::string& key);

    // What is to be offered when the script is opened with this content of its file. A copy that
    // says the same goes by itself.
    RecoveryOffer Find(const std::string& key, std::optional<std::string_view> content);
    // Those of scripts never saved, oldest first; unusable ones are told in `faults`.
    std::vector<RecoveryCopy> FindNew(std::vector<platform::Notice>& faults) const;

  private:
    struct Written {
        std::int64_t elapsed = 0;
        std::uint64_t sum = 0;
        bool told = false;
    };

    std::string PathOf(std::string_view key) const;

    std::string m_folder;
    std::map<std::string, Written> m_written;
};

}  // namespace kalvex::workbench
