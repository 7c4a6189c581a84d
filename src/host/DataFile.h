// A variable data file as text: sections of lines "name:value", headers "[section]", and whatever
// else a person wrote there. No files and no variables here. Texts are Windows-1250; lines end in
// CR LF or LF when they are read and in CR LF when they are written.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kalvex::host {

// The section that a header names; of a longer name the first 80 characters.
std::optional<std::string_view> HeaderName(std::string_view line);

// The path with everything from its last dot on replaced by ".bak"; empty for one that ends so, as
// the file would be its own backup.
std::string BackupPath(std::string_view path);

// Gives name (without blanks around it) and value of each data line, in order: of the whole text,
// or of the section if one is named. A line is cut at its first colon.
void ReadDataLines(
    std::string_view text, std::string_view section,
    const std::function<void(std::string_view name, std::string_view value)>& assign);

// What is written for one variable.
struct DataEntry {
    std::string name;
    std::optional<std::string> line;  // without line end; none keeps an old line of that name
};

struct RewrittenData {
    std::string text;
    bool hasMore = false;  // the section is new, or holds a line that was not replaced
};

// The text with the section's lines of these names replaced and the missing ones added behind its
// last line. A section that is not there is added at the end. With an empty name it is always a new
// one, whose number follows the highest among the headers.
RewrittenData RewriteData(std::string_view text, std::string_view section,
                          std::span<const DataEntry> entries);

}  // namespace kalvex::host
