// What the tables of the language tell of its words: statements, directives, functions, conditions,
// properties, kinds of data, statuses and errors. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::run {

class LanguageHelp {
  public:
    explicit LanguageHelp(const platform::Translator& translator);

    // Every word with its purpose, a line each, below a heading for each kind. UTF-8, as below.
    std::string List() const;

    // The forms and the purpose of a word, case aside; of a property also without its dot, of an
    // error the number. Empty for a word that is none.
    std::string TextOf(std::string_view word) const;

    // Words that are like one that is none, the nearest first; none where there is none.
    std::vector<std::string> FindNear(std::string_view word) const;

  private:
    struct Entry {
        std::size_t kind;  // a row of the table of kinds
        std::string word;
        std::string usage;  // forms, a line each
        std::string purpose;
    };

    std::vector<std::string> m_headings;  // of the kinds
    std::vector<std::string> m_names;
    std::vector<Entry> m_entries;  // by kind
};

}  // namespace kalvex::run
