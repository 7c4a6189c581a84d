#include "programs/glossary/LanguageHelp.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "text/CodePage.h"
#include "text/NearestWord.h"

namespace kalvex::glossary {

namespace {

constexpr std::size_t kMostNear = 5;

std::string TextOf(const Section& section, const Entry& entry) {
    std::string text = fmt::format("{} ({})\n", entry.word, section.name);
    for (const std::string& form : entry.forms) text += fmt::format("    {}\n", form);
    if (!entry.purpose.empty()) text += entry.purpose + '\n';
    return text;
}

}  // namespace

LanguageHelp::LanguageHelp(std::vector<Section> glossary) : m_sections(std::move(glossary)) {
    std::erase_if(m_sections, [](const Section& section) { return section.name.empty(); });
}

std::string LanguageHelp::List() const {
    std::string list;
    for (const Section& section : m_sections) {
        list += fmt::format("{}{}\n", list.empty() ? "" : "\n", section.heading);
        for (const Entry& entry : section.entries) {
            list += entry.purpose.empty() ? fmt::format("  {}\n", entry.word)
                                          : fmt::format("  {:<26}{}\n", entry.word, entry.purpose);
        }
    }
    return list;
}

std::string LanguageHelp::TextOf(std::string_view word) const {
    std::string texts;
    for (const Section& section : m_sections) {
        for (const Entry& entry : section.entries) {
            if (!text::EqualNoCase(WithoutDot(entry.word), WithoutDot(word))) continue;
            texts.append(texts.empty() ? "" : "\n").append(glossary::TextOf(section, entry));
        }
    }
    return texts;
}

std::vector<std::string> LanguageHelp::FindNear(std::string_view word) const {
    const std::string upper = text::ToUpper(WithoutDot(word));
    std::vector<std::string_view> words;
    for (const Section& section : m_sections) {
        for (const Entry& entry : section.entries) words.push_back(WithoutDot(entry.word));
    }
    std::vector<std::string> near;
    while (near.size() < kMostNear) {
        std::string_view found = text::FindNearestWord(upper, words);
        if (found.empty()) {
            const auto holds = [&upper](std::string_view one) {
                return one.find(upper) != std::string_view::npos;
            };
            const auto one = std::ranges::find_if(words, holds);
            if (upper.empty() || one == words.end()) break;
            found = *one;
        }
        near.emplace_back(found);
        std::erase(words, found);
    }
    return near;
}

}  // namespace kalvex::glossary
