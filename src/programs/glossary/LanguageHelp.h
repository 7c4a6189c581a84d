// What the terminal tells of the words of the language. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "programs/glossary/Glossary.h"

namespace kalvex::glossary {

class LanguageHelp {
  public:
    explicit LanguageHelp(std::vector<Section> glossary);

    // Every word with its purpose, a line each, below the heading of its section. UTF-8, as below.
    std::string List() const;

    // The forms and the purpose of a word, case aside; of a property also without its dot, of an
    // error the number. Empty for a word that is none.
    std::string TextOf(std::string_view word) const;

    // Words that are like one that is none, the nearest first; none where there is none.
    std::vector<std::string> FindNear(std::string_view word) const;

  private:
    std::vector<Section> m_sections;  // those that have words
};

}  // namespace kalvex::glossary
