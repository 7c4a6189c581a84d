#include "programs/CommandForm.h"

#include <fmt/format.h>

#include <algorithm>

#include "text/NearestWord.h"

namespace kalvex::programs {

namespace {

// What all options have in common makes none of them near.
std::string_view WithoutDashes(std::string_view word) {
    return word.substr(std::min(word.find_first_not_of('-'), word.size()));
}

void AddNames(const CommandForm& form, bool options, std::vector<std::string_view>& names) {
    for (const OptionForm& option : form.options) {
        if (options) names.push_back(option.name);
    }
    for (const CommandForm& command : form.commands) {
        if (!options) names.push_back(command.name);
        AddNames(command, options, names);
    }
}

const ValueForm kCommonRows[] = {
    {"FILE", Offer::File}, {"FOLDER", Offer::Folder}, {"N", Offer::Number}, {"S", Offer::Number}};

}  // namespace

ValueForm MakeValueForm(std::string_view name, std::span<const ValueForm> rows) {
    const bool mayLack = name.starts_with('[');
    const std::string_view bare = mayLack ? name.substr(1, name.size() - 2) : name;
    for (const std::span<const ValueForm> known : {rows, std::span<const ValueForm>(kCommonRows)}) {
        const auto row = std::ranges::find(known, bare, &ValueForm::name);
        if (row != known.end()) return {row->name, row->offer, row->detail, mayLack};
    }
    return {std::string(bare), Offer::Nothing, {}, mayLack};
}

std::string Suggest(const CommandForm& program, std::string_view word) {
    std::vector<std::string_view> names;
    AddNames(program, word.starts_with('-'), names);
    return Suggest(names, word);
}

std::string Suggest(std::span<const std::string_view> known, std::string_view word) {
    const std::string_view name = WithoutDashes(word.substr(0, word.find('=')));
    std::vector<std::string_view> names;
    for (const std::string_view one : known) names.push_back(WithoutDashes(one));
    const std::string_view nearest = text::FindNearestWord(name, names);
    if (nearest.empty() || nearest == name) return {};
    const auto place = std::ranges::find(names, nearest) - names.begin();
    return fmt::format(", did you mean {}?", known[static_cast<std::size_t>(place)]);
}

}  // namespace kalvex::programs
