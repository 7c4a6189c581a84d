#include "workbench/model/RecoveryStore.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/Files.h"
#include "workbench/model/PutFile.h"

namespace kalvex::workbench {

namespace {

namespace fs = std::filesystem;
using platform::Notice;
using platform::Translatable;

constexpr const char* kNotWritten =
    Translatable("Nie można zapisać kopii bezpieczeństwa skryptu %s (%s)");
constexpr const char* kDamaged =
    Translatable("Kopia bezpieczeństwa %s jest uszkodzona i została pominięta");
constexpr const char* kNotRead = Translatable("Nie można odczytać kopii bezpieczeństwa %s (%s)");

constexpr std::string_view kForm = "kalvex-recovery 1";
constexpr const char* kExtension = ".recovery";

std::uint64_t SumOf(std::string_view text) {
    std::uint64_t sum = 14695981039346656037U;
    for (const char c : text) {
        sum ^= static_cast<unsigned char>(c);
        sum *= 1099511628211U;
    }
    return sum;
}

std::string Hexadecimal(std::uint64_t number) {
    char buffer[17];
    std::snprintf(buffer, sizeof buffer, "%016llx", static_cast<unsigned long long>(number));
    return buffer;
}

constexpr std::string_view kNoFile = "-";

std::string BaseOf(std::optional<std::string_view> content) {
    return content ? Hexadecimal(SumOf(*content)) : std::string(kNoFile);
}

struct Content {
    RecoveryCopy copy;
    std::string base;
};

// The line of that word, taken off the text.
std::optional<std::string_view> TakeLine(std::string_view& text, std::string_view word) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos || !text.starts_with(word)) return std::nullopt;
    const std::string_view rest = text.substr(word.size(), end - word.size());
    text.remove_prefix(end + 1);
    return rest;
}

std::string Compose(std::string_view key, std::string_view text, const std::string& base,
                    std::int64_t now) {
    std::string file(kForm);
    file += "\nkey ";
    file += key;
    file += "\ntime " + std::to_string(now);
    file += "\nbase " + base;
    file += "\nsum " + Hexadecimal(SumOf(text)) + "\n";
    file += text;
    return file;
}

std::optional<Content> Parse(std::string_view file) {
    const auto form = TakeLine(file, kForm);
    const auto key = TakeLine(file, "key ");
    const auto time = TakeLine(file, "time ");
    const auto base = TakeLine(file, "base ");
    const auto sum = TakeLine(file, "sum ");
    if (!form || !key || !time || !base || !sum) return std::nullopt;
    Content content;
    const auto read = std::from_chars(time->data(), time->data() + time->size(), content.copy.time);
    if (!form->empty() || read.ec != std::errc() || *sum != Hexadecimal(SumOf(file)))
        return std::nullopt;
    content.copy.key = *key;
    content.copy.text = file;
    content.base = *base;
    return content;
}

std::optional<Content> Load(const std::string& path, Notice& fault) {
    std::string file;
    std::string error;
    if (!platform::ReadWholeFile(path, file, error)) {
        fault = {kNotRead, {path, error}};
        return std::nullopt;
    }
    std::optional<Content> content = Parse(file);
    if (!content) fault = {kDamaged, {path}};
    return content;
}

}  // namespace

std::string RecoveryStore::KeyOfNew(std::string_view title, std::int64_t opened) {
    return std::string(title) + ' ' + std::to_string(opened);
}

std::string RecoveryStore::TitleOfNew(std::string_view key) {
    return std::string(key.substr(0, key.rfind(' ')));
}

std::string RecoveryStore::PathOf(std::string_view key) const {
    return m_folder + "/" + Hexadecimal(SumOf(key)) + kExtension;
}

bool RecoveryStore::IsDue(const std::string& key, std::int64_t elapsed) const {
    const auto written = m_written.find(key);
    return written == m_written.end() || elapsed - written->second.elapsed >= kPause;
}

Notice RecoveryStore::Keep(const std::string& key, std::string_view text,
                           std::optional<std::string_view> saved, std::int64_t now,
                           std::int64_t elapsed) {
    if (!IsDue(key, elapsed)) return {};
    const std::uint64_t sum = SumOf(text);
    Written& written = m_written[key];
    written.elapsed = elapsed;
    if (written.sum == sum) return {};
    std::string error;
    if (PutFile(PathOf(key), Compose(key, text, BaseOf(saved), now), error)) {
        written.sum = sum;
        written.told = false;
        return {};
    }
    if (std::exchange(written.told, true)) return {};
    return {kNotWritten, {IsKeyOfNew(key) ? TitleOfNew(key) : key, error}};
}

void RecoveryStore::Drop(const std::string& key) {
    m_written.erase(key);
    std::error_code fault;
    fs::remove(PathOf(key), fault);
}

RecoveryOffer RecoveryStore::Find(const std::string& key, std::optional<std::string_view> content) {
    const std::string path = PathOf(key);
    std::error_code fault;
    RecoveryOffer offer;
    if (!fs::exists(path, fault)) return offer;
    std::optional<Content> found = Load(path, offer.fault);
    if (!found || found->copy.key != key) return offer;
    if (content && found->copy.text == *content) {
        Drop(key);
        return offer;
    }
    found->copy.fileChanged = found->base != BaseOf(content);
    offer.copy = std::move(found->copy);
    return offer;
}

std::vector<RecoveryCopy> RecoveryStore::FindNew(std::vector<Notice>& faults) const {
    std::vector<RecoveryCopy> copies;
    std::error_code error;
    for (fs::directory_iterator at(m_folder, error), end; !error && at != end;
         at.increment(error)) {
        if (at->path().extension() != kExtension) continue;
        Notice fault;
        std::optional<Content> found = Load(at->path(), fault);
        if (fault) faults.push_back(std::move(fault));
        if (found && IsKeyOfNew(found->copy.key)) copies.push_back(std::move(found->copy));
    }
    std::ranges::sort(copies, {},
                      [](const RecoveryCopy& copy) { return std::pair(copy.time, copy.key); });
    return copies;
}

}  // namespace kalvex::workbench
