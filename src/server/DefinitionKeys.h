// The keys of the configuration: one table for each section, and one for variables, which the
// columns of CSV files share. Each row checks a text and stores what it says.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "server/Definitions.h"

namespace kalvex::server {

template <class Target>
struct DefinitionKey {
    std::string_view name;
    // `name` is that of the key. The text is an engine text, a number its decimal text, a list its
    // elements in lines. The answer tells what is wrong, if anything.
    platform::Notice (*set)(Target& target, std::string_view name, std::string_view text);
    bool list = false;
};

struct DefinitionSection {
    std::string_view name;
    std::span<const DefinitionKey<Definitions>> keys;
};

std::span<const DefinitionSection> DefinitionSections();

std::span<const DefinitionKey<AccessRule>> AccessKeys();
std::span<const DefinitionKey<RetentionRule>> RetentionKeys();
std::span<const DefinitionKey<VariableConfig>> VariableKeys();

// What a variable needs as a whole, once its keys are set; empty when all is well, else the key in
// `key` and the reason.
platform::Notice CheckVariable(const VariableConfig& variable, std::string& key);

// The row of that name, or null.
template <class Target>
const DefinitionKey<Target>* FindKey(std::span<const DefinitionKey<Target>> keys,
                                     std::string_view name) {
    for (const DefinitionKey<Target>& key : keys) {
        if (key.name == name) return &key;
    }
    return nullptr;
}

}  // namespace kalvex::server
