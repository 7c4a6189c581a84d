// The help of the words of the language, as a tip shows it: a line for what the word is, then the
// forms in which it is used, a line each. Most of it is what the tables of the language tell. Any
// thread.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::workbench {

// The words that have help, in the order of the help list.
std::vector<std::string_view> HelpKeywords();

class KeywordHelp {
  public:
    explicit KeywordHelp(const platform::Translator& translator);

    // An engine text, line ends LF; empty for a word without help. With case.
    std::string_view TextOf(std::string_view word) const;

  private:
    std::unordered_map<std::string_view, std::string> m_texts;
};

}  // namespace kalvex::workbench
