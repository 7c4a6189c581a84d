// The text of an ini file, changed line by line: comments, order, line ends and whatever is not
// understood stay as they are.
//
// A line is a heading "[section]", an entry "key=value", or something else; ";" and "#" begin a
// comment at the start of a line only. Blanks around names and values do not count; a value that
// needs them stands in quotes. A section may have several headings. A mark of UTF-8 at the
// beginning of the text belongs to no line, and stays.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Profile.h"

namespace kalvex::platform {

enum class IniKind { Heading, Entry, Comment, Blank, Other };

// A line as it was read.
struct IniLine {
    IniKind kind;
    std::string section;  // whose line it is, as its heading has it; empty above the first one
    std::string key;      // of an entry
    std::string value;
};

class IniText {
  public:
    explicit IniText(std::string_view content);
    // Whether the content of a file is none of a text at all.
    static bool IsBinary(std::string_view content);

    std::string GetContent() const;

    // The first entry of the name counts.
    std::optional<std::string> Get(std::string_view section, std::string_view key) const;
    // The line where that entry stands, from 1; 0 without one.
    int FindLine(std::string_view section, std::string_view key) const;
    ProfileEntries GetSection(std::string_view section) const;
    // All of them in order.
    std::vector<IniLine> GetLines() const;

    // False, with nothing changed, when a text has a line end or a name cannot stand in its place.
    bool Set(std::string_view section, std::string_view key, std::string_view value);
    bool SetSection(std::string_view section, const ProfileEntries& entries);

    void Remove(std::string_view section, std::string_view key);
    // Goes with its comments, but for those that stand directly above the next heading.
    void RemoveSection(std::string_view section);

  private:
    struct Line {
        std::string text;  // with its line end
        IniKind kind;
        std::string name;        // of a heading or an entry
        std::size_t value = 0;   // of an entry: where the value begins
        std::size_t length = 0;  // of the text without its end
    };

    static Line ParseLine(std::string_view text);
    static std::string ValueOf(const Line& line);

    // For each line whether it belongs to the section, its headings included.
    std::vector<bool> LinesOf(std::string_view section) const;
    void Put(std::string_view section, std::string_view key, std::string_view value);
    void InsertLine(std::size_t index, std::string_view text);
    void AppendHeading(std::string_view section);

    std::string m_mark;
    std::string m_lineEnd;
    std::vector<Line> m_lines;
};

}  // namespace kalvex::platform
