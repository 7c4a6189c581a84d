#include "platform/IniProfile.h"

#include <cstdlib>
#include <filesystem>

#include "platform/FileEdit.h"
#include "platform/Files.h"
#include "platform/Translator.h"

namespace kalvex::platform {

const char* const kBinary = Translatable("to plik binarny, a nie tekst");

bool IniProfile::IsReadable(std::string& error, const std::string& path) const {
    std::string content;
    std::error_code fault;
    const std::filesystem::file_status status = std::filesystem::status(PathOr(path), fault);
    if (status.type() == std::filesystem::file_type::not_found) return true;
    if (!ReadWholeFile(PathOr(path), content, error)) return false;
    if (!IniText::IsBinary(content)) return true;
    error = kBinary;
    return false;
}

IniText IniProfile::Read(const std::string& path) const {
    std::string content;
    std::string error;
    const bool read = ReadWholeFile(PathOr(path), content, error) && !IniText::IsBinary(content);
    return IniText(read ? content : std::string());
}

bool IniProfile::Edit(const std::string& path, const std::function<bool(IniText&)>& change) {
    bool accepted = false;
    bool isBinary = false;
    const auto edit = [&](std::string& content) {
        isBinary = IniText::IsBinary(content);
        if (isBinary) return false;
        IniText text(content);
        accepted = change(text);
        std::string changed = text.GetContent();
        if (changed == content) return false;
        content = std::move(changed);
        return true;
    };
    m_writeFault = {};
    if (!EditWholeFile(PathOr(path), edit, m_writeFault)) return false;
    if (isBinary) m_writeFault = {kBinary};
    return accepted;
}

std::string IniProfile::GetProfileStringEx(std::string_view section, std::string_view key,
                                           std::string_view fallback,
                                           const std::string& path) const {
    return Read(path).Get(section, key).value_or(std::string(fallback));
}

ProfileEntries IniProfile::GetProfileSectionEx(std::string_view section,
                                               const std::string& path) const {
    return Read(path).GetSection(section);
}

bool IniProfile::WriteProfileStringEx(std::string_view section, std::optional<std::string_view> key,
                                      std::optional<std::string_view> value,
                                      const std::string& path) {
    return Edit(path, [&](IniText& text) {
        if (key && value) return text.Set(section, *key, *value);
        if (key) {
            text.Remove(section, *key);
        } else {
            text.RemoveSection(section);
        }
        return true;
    });
}

bool IniProfile::WriteProfileSectionEx(std::string_view section, const ProfileEntries& entries,
                                       const std::string& path) {
    return Edit(path, [&](IniText& text) { return text.SetSection(section, entries); });
}

bool IniProfile::EditProfileSectionEx(std::string_view section,
                                      const std::function<bool(ProfileEntries&)>& change,
                                      const std::string& path) {
    return Edit(path, [&](IniText& text) {
        ProfileEntries entries = text.GetSection(section);
        return change(entries) && text.SetSection(section, entries);
    });
}

std::string IniProfile::GetCommonProfilePath() const {
    const char* path = std::getenv("SORVANE_COMMON_PROFILE");
    return path != nullptr && *path != '\0' ? path : "/etc/sorvane/sorvane.ini";
}

}  // namespace kalvex::platform
