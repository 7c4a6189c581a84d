#include "app/Configuration.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>

#include "app/ProfileCheck.h"
#include "app/ProfileKeys.h"
#include "platform/FileTexts.h"
#include "platform/Files.h"
#include "platform/ForeignText.h"
#include "text/CodePage.h"
#include "text/WholeNumber.h"

namespace kalvex::app {

namespace {

constexpr const char* kPasswordLabel = "Kalvex";

constexpr const char* kLost =
    platform::Translatable("Klucz %s nie otwiera hasła z pliku %s ([%s] %s): źródło bez logowania");
constexpr const char* kNotWritten =
    platform::Translatable("Nie można zapisać pliku %s (%s): [%s] %s");

constexpr std::size_t kColumnCount = 7;
constexpr unsigned int kColumnWidth = 60;
constexpr int kLateColumnWidth = 120;
constexpr std::size_t kFirstLateColumn = 5;

// The old form has two characters for a byte: its low and its high four bits, each above the blank.
std::string DecodePlainPassword(std::string_view text) {
    std::string password;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const int low = static_cast<unsigned char>(text[i]) - ' ';
        const int high = static_cast<unsigned char>(text[i + 1]) - ' ';
        password += static_cast<char>(low + 16 * high);
    }
    return password;
}

// What stands before the first comma, which is then cut off; nothing when that is empty or there is
// no comma.
std::optional<std::string> TakeField(std::string_view& rest) {
    const std::size_t comma = rest.find(',');
    if (comma == 0 || comma == std::string_view::npos) return std::nullopt;
    std::string field(rest.substr(0, comma));
    rest.remove_prefix(comma + 1);
    return field;
}

// The password as the profile has it.
sources::CSourceDesc ReadSource(std::string_view line) {
    sources::CSourceDesc description;
    if (const auto name = TakeField(line)) {
        description.name = *name;
        if (const auto user = TakeField(line)) {
            description.user = *user;
            description.password = line;
        }
    }
    return description;
}

bool HasWidth(std::span<const unsigned int> widths) {
    return std::ranges::any_of(widths, [](unsigned int width) { return width != 0; });
}

std::array<unsigned int, kColumnCount> ParseColumns(const std::string& text) {
    std::array<int, kColumnCount> numbers{};
    const int count = std::sscanf(text.c_str(), "%d %d %d %d %d %d %d", &numbers[0], &numbers[1],
                                  &numbers[2], &numbers[3], &numbers[4], &numbers[5], &numbers[6]);
    for (std::size_t i = kFirstLateColumn; i < kColumnCount; ++i) {
        if (static_cast<int>(i) >= count) numbers[i] = kLateColumnWidth;
    }
    std::array<unsigned int, kColumnCount> widths{};
    std::ranges::copy(numbers, widths.begin());
    if (text.empty() || !HasWidth(widths)) widths.fill(kColumnWidth);
    return widths;
}

platform::ProfileEntries Numbered(const char* key, const std::vector<std::string>& values) {
    platform::ProfileEntries entries;
    for (const std::string& value : values) {
        entries.emplace_back(fmt::format("{}{}", key, entries.size()), value);
    }
    return entries;
}

// The values of the numbered keys, up to the first that is missing or empty. Of a key that stands
// there twice the first one counts.
std::vector<std::string> ListOf(std::string_view key, const platform::ProfileEntries& entries) {
    std::map<int, std::string> byNumber;
    for (const auto& [name, value] : entries) {
        if (const std::optional<int> number = NumberIn(name, key))
            byNumber.try_emplace(*number, value);
    }
    std::vector<std::string> values;
    for (auto& [number, value] : byNumber) {
        if (static_cast<std::size_t>(number) != values.size() || value.empty()) break;
        values.push_back(std::move(value));
    }
    return values;
}

std::string ValueAmong(const platform::ProfileEntries& entries, const std::string& name) {
    const auto found = std::ranges::find_if(
        entries, [&](const auto& entry) { return text::EqualNoCase(entry.first, name); });
    return found == entries.end() ? std::string() : found->second;
}

}  // namespace

void ConfigurationStore::ReadName(KalvexConfiguration& configuration) const {
    configuration.moduleName = m_profile.GetProfileStringEx(Section::General, Key::Name);
}

void ConfigurationStore::ReadSources(KalvexConfiguration& configuration) const {
    std::ranges::move(OpenSources(ReadList(Section::Sources, Key::Source)),
                      std::back_inserter(configuration.sources));
}

void ConfigurationStore::ReadWindows(KalvexConfiguration& configuration) const {
    configuration.trayIcon =
        m_profile.GetProfileIntEx(Section::Windows, Key::TrayIcon, configuration.trayIcon) != 0;
    configuration.refreshPeriod = static_cast<unsigned int>(
        m_profile.GetProfileIntEx(Section::Windows, text::FromUtf8(Key::RefreshPeriod),
                                  static_cast<int>(configuration.refreshPeriod)));
    for (const std::string& path : ReadList(Section::Autostart, Key::Script)) {
        configuration.autostart.push_back(m_paths.GetFullPath(path));
    }
}

void ConfigurationStore::ReadColumns(KalvexConfiguration& configuration) const {
    const auto widths =
        ParseColumns(m_profile.GetProfileStringEx(Section::Windows, text::FromUtf8(Key::Columns)));
    configuration.columnWidths.insert(configuration.columnWidths.end(), widths.begin(),
                                      widths.end());
}

void ConfigurationStore::ReadRights(KalvexConfiguration& configuration) const {
    const auto read = [this](const char* key, std::string& right) {
        right = m_profile.GetProfileStringEx(Section::General, text::FromUtf8(key), right);
    };
    read(Key::ConfigurationRight, configuration.configurationRight);
    read(Key::ControlRight, configuration.controlRight);
}

void ConfigurationStore::ReadLogLevel(KalvexConfiguration& configuration) const {
    configuration.logLevel =
        m_consoleClient
            ? kLogLevelOfModule
            : m_profile.GetProfileIntEx(Section::Log, Key::LogLevel, configuration.logLevel);
}

std::vector<std::string> ConfigurationStore::ReadList(std::string_view section,
                                                      std::string_view key) const {
    return ListOf(key, m_profile.GetProfileSectionEx(section));
}

// All are opened before one is protected for the memory, so that a key that is missing shows and is
// not made anew.
std::vector<sources::CSourceDesc> ConfigurationStore::OpenSources(
    const std::vector<std::string>& lines) const {
    std::vector<sources::CSourceDesc> sources;
    std::vector<std::optional<std::string>> passwords;
    for (const std::string& line : lines) {
        sources.push_back(ReadSource(line));
        passwords.push_back(DecodePassword(sources.back().password));
    }
    for (std::size_t i = 0; i < sources.size(); ++i) {
        sources[i].lost = !passwords[i];
        if (sources[i].lost) continue;
        sources[i].password = m_crypt.EncryptText(*passwords[i]);
        platform::CCrypt::SecureEmptyString(*passwords[i]);
    }
    return sources;
}

std::optional<std::string> ConfigurationStore::DecodePassword(std::string_view text) const {
    if (!platform::CCrypt::GetCryptHeader(text)) return DecodePlainPassword(text);
    return m_crypt.DecryptTextWithLabel(kPasswordLabel, text);
}

bool ConfigurationStore::EditSources(
    const std::function<bool(std::vector<sources::CSourceDesc>&)>& change) {
    // The key lies beside the profile, so it has to be there before the profile is locked.
    OpenSources(ReadList(Section::Sources, Key::Source));
    if (!m_crypt.EncryptTextWithLabel(kPasswordLabel, {})) return false;
    return m_profile.EditProfileSectionEx(Section::Sources, [&](platform::ProfileEntries& entries) {
        std::vector<sources::CSourceDesc> sources = OpenSources(ListOf(Key::Source, entries));
        if (!change(sources)) return false;
        std::vector<std::string> lines;
        for (const sources::CSourceDesc& source : sources) lines.push_back(SealSource(source));
        entries = Numbered(Key::Source, lines);
        return true;
    });
}

std::string ConfigurationStore::SealSource(const sources::CSourceDesc& source) const {
    const std::string head = source.name + ',' + source.user + ',';
    if (source.lost) return head + source.password;
    std::string password = m_crypt.CanDecryptText(source.password)
                               ? m_crypt.DecryptText(source.password)
                               : source.password;
    // The key lasts, or the sources are not written.
    const std::string sealed = m_crypt.EncryptTextWithLabel(kPasswordLabel, password).value();
    platform::CCrypt::SecureEmptyString(password);
    return head + sealed;
}

std::vector<std::string> ConfigurationStore::FindFaults(
    const KalvexConfiguration& configuration, const std::string& profile,
    const platform::Translator& translator) const {
    std::vector<std::string> faults;
    const auto add = [&](const char* text, std::initializer_list<std::string> values) {
        faults.push_back(platform::InWords({text, values}, translator));
    };
    const std::string common = m_profile.GetCommonProfilePath();
    std::string reason;
    if (!m_profile.IsReadable(reason, common)) {
        add(platform::kUnreadableFile, {common, platform::InWords({reason.c_str()}, translator)});
    }
    const auto addAll = [&](const std::string& file, std::span<const ProfileKey> keys) {
        std::string content;
        platform::ReadWholeFile(file, content, reason);
        const platform::Notice notice = platform::DescribeForeignText(file, content);
        if (notice) faults.push_back(platform::InWords(notice, translator));
        std::ranges::move(FindProfileFaults(file, keys, translator), std::back_inserter(faults));
    };
    addAll(profile, ModuleKeys());
    addAll(common, MachineKeys());
    if (const platform::Notice open = platform::DescribeOpenSecret(m_crypt.GetKeyFile())) {
        faults.push_back(platform::InWords(open, translator));
    }
    for (std::size_t i = 0; i < configuration.sources.size(); ++i) {
        if (!configuration.sources[i].lost) continue;
        add(kLost,
            {m_crypt.GetKeyFile(), profile, Section::Sources, fmt::format("{}{}", Key::Source, i)});
    }
    std::ranges::transform(faults, faults.begin(), text::FromUtf8);
    return faults;
}

void ConfigurationStore::WriteColumns(const KalvexConfiguration& configuration) {
    std::array<unsigned int, kColumnCount> widths{};
    const std::size_t count = std::min(kColumnCount, configuration.columnWidths.size());
    std::copy_n(configuration.columnWidths.begin(), count, widths.begin());
    const std::string name = text::FromUtf8(Key::Columns);
    const std::string present = ValueAmong(m_profile.GetProfileSectionEx(Section::Windows), name);
    if (!present.empty() && ParseColumns(present) == widths) return;
    std::string text;
    if (HasWidth(widths)) {
        for (const unsigned int width : widths) {
            text += fmt::format("{}{}", text.empty() ? "" : " ", static_cast<int>(width));
        }
    }
    m_profile.WriteProfileStringEx(Section::Windows, name, text);
}

// What could not be read stays as somebody has written it, until the setting is another one.
bool ConfigurationStore::WriteNumber(const char* section, const char* key, int value,
                                     int fallback) {
    const std::string name = text::FromUtf8(key);
    const std::string present = ValueAmong(m_profile.GetProfileSectionEx(section), name);
    const bool isRead = present.empty() || text::ReadWholeNumber<int>(present);
    if (!isRead && m_profile.GetProfileIntEx(section, name, fallback) == value) return true;
    return m_profile.WriteProfileIntEx(section, name, value);
}

bool ConfigurationStore::WriteLogLevel(const KalvexConfiguration& configuration) {
    if (m_consoleClient) return true;
    const bool transmission = configuration.logLevel == platform::LogTransmission;
    return WriteNumber(Section::Log, Key::LogLevel,
                       transmission ? platform::LogErrors : configuration.logLevel,
                       KalvexConfiguration().logLevel);
}

std::string ConfigurationStore::WhyNoLogLevel(const std::string& profile,
                                              const platform::Translator& translator) const {
    const std::string reason = platform::InWords(m_profile.GetWriteFault(), translator);
    return text::FromUtf8(platform::InWords(
        {kNotWritten, {profile, reason, Section::Log, Key::LogLevel}}, translator));
}

std::string ConfigurationStore::ReadLogFont() const {
    return m_profile.GetProfileStringEx(Section::Windows, Key::LogFont);
}

void ConfigurationStore::WriteLogFont(std::string_view font) {
    m_profile.WriteProfileStringEx(Section::Windows, Key::LogFont, font);
}

void ConfigurationStore::WriteApplication(const KalvexConfiguration& configuration) {
    const KalvexConfiguration defaults;
    WriteNumber(Section::Windows, Key::TrayIcon, configuration.trayIcon, defaults.trayIcon);
    WriteNumber(Section::Windows, Key::RefreshPeriod, static_cast<int>(configuration.refreshPeriod),
                static_cast<int>(defaults.refreshPeriod));
    std::vector<std::string> paths;
    for (const std::string& path : configuration.autostart) {
        paths.push_back(m_paths.GetShortPath(path));
    }
    m_profile.WriteProfileSectionEx(Section::Autostart, Numbered(Key::Script, paths));
    WriteLogLevel(configuration);
    m_profile.WriteProfileStringEx(Section::General, text::FromUtf8(Key::ConfigurationRight),
                                   configuration.configurationRight);
    m_profile.WriteProfileStringEx(Section::General, text::FromUtf8(Key::ControlRight),
                                   configuration.controlRight);
}

bool IsSourceField(std::string_view text) {
    return !text.empty() && text.find_first_of(",\r\n") == std::string_view::npos;
}

std::string ProfileFileName(int instance) {
    return instance == 1 ? "Kalvex.ini" : fmt::format("Kalvex{}.ini", instance);
}

std::string ReadRootFolder(const platform::Profile& profile, const std::string& workingDir) {
    std::string name =
        profile.GetProfileStringEx(Section::General, text::FromUtf8(Key::RootFolder));
    std::ranges::replace(name, '\\', '/');
    const std::filesystem::path folder = platform::NativePath(name);
    return folder.empty() ? workingDir : (workingDir / folder).lexically_normal().string();
}

}  // namespace kalvex::app
