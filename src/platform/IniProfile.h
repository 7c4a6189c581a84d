// The profile as an ini file in Windows-1250 (platform/IniText.h). Each reading reads the file, so
// a change by hand shows at the next one; each writing changes the file as a whole or not at all.
#pragma once

#include <functional>
#include <string>

#include "platform/IniText.h"
#include "platform/Profile.h"

namespace kalvex::platform {

// What is said of a file that is no text: nothing is read of it, and it is not written. To be
// translated.
extern const char* const kBinary;

class IniProfile final : public Profile {
  public:
    // The file of the process; it need not be there.
    explicit IniProfile(std::string path = {}) : m_path(std::move(path)) {}

    void SetProfileConfigEx(std::string path) override { m_path = std::move(path); }
    bool IsReadable(std::string& error, const std::string& path = {}) const override;

    std::string GetProfileStringEx(std::string_view section, std::string_view key,
                                   std::string_view fallback = {},
                                   const std::string& path = {}) const override;
    ProfileEntries GetProfileSectionEx(std::string_view section,
                                       const std::string& path = {}) const override;
    bool WriteProfileStringEx(std::string_view section, std::optional<std::string_view> key,
                              std::optional<std::string_view> value,
                              const std::string& path = {}) override;
    bool WriteProfileSectionEx(std::string_view section, const ProfileEntries& entries,
                               const std::string& path = {}) override;
    bool EditProfileSectionEx(std::string_view section,
                              const std::function<bool(ProfileEntries&)>& change,
                              const std::string& path = {}) override;
    const Notice& GetWriteFault() const override { return m_writeFault; }

    // $SORVANE_COMMON_PROFILE, else /etc/sorvane/sorvane.ini.
    std::string GetCommonProfilePath() const override;

  private:
    const std::string& PathOr(const std::string& path) const {
        return path.empty() ? m_path : path;
    }
    IniText Read(const std::string& path) const;
    bool Edit(const std::string& path, const std::function<bool(IniText&)>& change);

    std::string m_path;
    Notice m_writeFault;
};

}  // namespace kalvex::platform
