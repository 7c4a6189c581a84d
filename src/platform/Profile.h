// The configuration store: texts and numbers by section and key. Main thread. Sections, keys and
// values are engine texts (Windows-1250); the case of sections and keys plays no part. Paths are
// the system's; an empty path means the profile of the process, another one that file.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::platform {

using ProfileEntries = std::vector<std::pair<std::string, std::string>>;

class Profile {
  public:
    virtual ~Profile() = default;

    // Takes the file as the profile of the process from now on; it need not be there.
    virtual void SetProfileConfigEx(std::string path) = 0;
    // False, with the system's words or a text to translate in `error`, when the profile is there
    // and cannot be read.
    virtual bool IsReadable(std::string& error, const std::string& path = {}) const = 0;

    // The value of the key, or the fallback where there is none.
    virtual std::string GetProfileStringEx(std::string_view section, std::string_view key,
                                           std::string_view fallback = {},
                                           const std::string& path = {}) const = 0;

    // The number that the value begins with. The fallback also when that is none, or out of range.
    int GetProfileIntEx(std::string_view section, std::string_view key, int fallback,
                        const std::string& path = {}) const;

    // All keys of a section with their values, in order.
    virtual ProfileEntries GetProfileSectionEx(std::string_view section,
                                               const std::string& path = {}) const = 0;

    // Without a key the section goes, without a value the key. A false leaves the store as it was:
    // it cannot be written, or a text holds what the store has no form for.
    virtual bool WriteProfileStringEx(std::string_view section, std::optional<std::string_view> key,
                                      std::optional<std::string_view> value,
                                      const std::string& path = {}) = 0;
    bool WriteProfileIntEx(std::string_view section, std::string_view key, int value,
                           const std::string& path = {});

    // Puts these entries in the place of all that the section has, at once or not at all.
    virtual bool WriteProfileSectionEx(std::string_view section, const ProfileEntries& entries,
                                       const std::string& path = {}) = 0;

    // Hands the entries over to be changed and puts them in the place of all that the section has,
    // if `change` says so, with no other writer in between. `change` does not use the store.
    virtual bool EditProfileSectionEx(std::string_view section,
                                      const std::function<bool(ProfileEntries&)>& change,
                                      const std::string& path = {}) = 0;
    // Why the last of these could not write; nothing when it could, or when a text had no form.
    virtual const Notice& GetWriteFault() const = 0;

    // The profile that all modules of the machine share.
    virtual std::string GetCommonProfilePath() const = 0;
};

}  // namespace kalvex::platform
