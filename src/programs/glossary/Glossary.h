// What the tables of the language tell of its words, gathered for all that show it: the help in the
// terminal, the manual page and the card. UTF-8, in the language of the translator. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::glossary {

struct Entry {
    std::string word;                     // a property with its dot, an error by its number
    std::string label;                    // as it is written in a script, or with its number
    std::vector<std::string> forms = {};  // each whole; none where no table has any
    std::string purpose = {};             // empty where no table tells it
};

// What tells most of the entries of a section at a glance.
enum class Layout {
    Forms,
    Lines,  // labels that want a line each
    Words,  // short labels
};

struct Section {
    std::string heading;
    std::string name;  // of one entry; empty where an entry is no word that can be asked for
    Layout layout;
    std::vector<Entry> entries;  // in the order of the table
};

// Every section, in the order in which they are shown.
std::vector<Section> MakeGlossary(const platform::Translator& translator);

// A property as it may be asked for.
std::string_view WithoutDot(std::string_view word);

}  // namespace kalvex::glossary
