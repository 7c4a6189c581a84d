// What can follow at a place of a script: the word before the caret, whether its dotted prefix is
// known, and which list belongs there. Texts are engine texts, offsets count their bytes from 0 at
// the start of a line. Main thread.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "workbench/model/CompletionTables.h"

namespace kalvex::workbench {

// The lines of the script, without their line ends; what is told need not outlive the next line.
struct ScriptLines {
    int count = 0;
    std::function<std::string_view(int line)> line;
};

// The chain of words and separators before the word at the offset, with the last separator, such as
// "TIME.HOUR."; empty when no separator stands before that word.
std::string PrefixAt(std::string_view line, std::size_t offset);
// Where the word before the offset begins.
std::size_t WordStart(std::string_view line, std::size_t offset);
// The word of which the byte is part; empty at a delimiter and behind the line.
std::string_view WordAt(std::string_view line, std::size_t offset);

// A list that may open, and what becomes of the text when a word of it is chosen: the word replaces
// what stands between the offset `from` and the caret.
struct Offer {
    OfferedWords list;  // empty: none
    std::size_t from = 0;
    std::string_view separator;  // what is put before the word; empty for nothing

    explicit operator bool() const { return !list.IsEmpty(); }
};

class WordCompletion {
  public:
    explicit WordCompletion(PrefixMap prefixes = KnownPrefixes()) : m_prefixes(prefixes) {}

    // A prefix of the map, or a variable of the script that a declaration names in any case, and a
    // point. The last variable that was found stays known until another prefix is looked for in
    // vain or found.
    bool IsKnown(std::string_view prefix, const ScriptLines& script);
    OfferedWords MembersOf(std::string_view prefix, const ScriptLines& script);

    // After `typed` has been put in before the offset.
    Offer OnTyped(char typed, std::string_view line, std::size_t offset, const ScriptLines& script);
    // What command 44045 opens; nothing where it is disabled.
    Offer OnCommand(std::string_view line, std::size_t offset, const ScriptLines& script);

  private:
    const PrefixRow* FindPrefix(std::string_view prefix) const;
    bool ScanDeclarations(std::string_view prefix, const ScriptLines& script);

    struct LastVariable {
        std::string prefix;  // with its point
        DeclaredKind kind = DeclaredKind::None;
    };

    PrefixMap m_prefixes;
    LastVariable m_last;
};

}  // namespace kalvex::workbench
