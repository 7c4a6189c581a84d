// The settings as the editor's kind of XML. The spelling of the element names is the format's own.
#include <algorithm>
#include <iterator>
#include <string>

#include "workbench/model/EditorSettings.h"

namespace kalvex::workbench {

namespace {

struct EntityRow {
    char character;
    std::string_view entity;
};

constexpr EntityRow kEntities[] = {
    {'&', "&amp;"},   {'<', "&lt;"},  {'>', "&gt;"},   {'"', "&quot;"},
    {'\'', "&apos;"}, {'\t', "&#9;"}, {'\n', "&#10;"},
};

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        const auto* const row = std::ranges::find(kEntities, c, &EntityRow::character);
        if (row == std::end(kEntities)) {
            escaped += c;
        } else {
            escaped += row->entity;
        }
    }
    return escaped;
}

std::string Attribute(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=\"" + Escaped(value) + '"';
}

std::string Flag(std::string_view name, bool set) {
    return Attribute(name, set ? "1" : "0");
}

// An element of one line; `content` is escaped already.
std::string Element(std::string_view name, const std::string& attributes,
                    const std::string& content) {
    const std::string start = "<" + std::string(name) + attributes;
    if (content.empty()) return start + "/>\n";
    return start + ">" + content + "</" + std::string(name) + ">\n";
}

std::string Group(const ColourGroup& group) {
    std::string words;
    for (const std::string_view word : group.words) {
        if (!words.empty()) words += ' ';
        words += Escaped(word);
    }
    return Element("ColorGroup", Attribute("Color", group.colour) + Flag("CaseSensitive", true),
                   words);
}

std::string Block(const ColourBlock& block) {
    return Element("ColorBlock",
                   Attribute("Start", block.start) + Attribute("End", block.end) +
                       Attribute("Color", block.colour) + Flag("WholeText", false),
                   {});
}

std::string Block(const OutlineBlock& block) {
    return Element("OutlineBlock",
                   Attribute("Start", block.start) + Attribute("End", block.end) +
                       Attribute("ShownAs", block.shownAs) + Flag("Nested", block.nested) +
                       Flag("Ignored", block.ignored),
                   {});
}

std::string Elements(std::string_view name, std::span<const std::string_view> values) {
    std::string text;
    for (const std::string_view value : values) text += Element(name, {}, Escaped(value));
    return text;
}

}  // namespace

std::string EditorSettingsXml() {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Settings" +
                       Attribute("Kind", kEditorSettingsKind) +
                       Attribute("Id", std::to_string(kEditorSettingsId)) + ">\n";
    text += Element("WordDelimeters", {}, Escaped(kWordDelimiters));
    text += Element("SpecialDelimiters", {}, Escaped(kSpecialDelimiters));
    text += Element("IntelliSenseChars", {}, Escaped(kIntelliSenseChars));
    for (const ColourGroup& group : ColourGroups()) text += Group(group);
    for (const ColourBlock& block : ColourBlocks()) text += Block(block);
    text += "<Outline" + Flag("CaseSensitive", true) + Flag("WholeWords", true) +
            Flag("IgnoreOneLineBlocks", true) + Flag("IncludeBlankLines", true) + ">\n";
    for (const OutlineBlock& block : OutlineBlocks()) text += Block(block);
    text += Elements("EscapeSequence", EscapeSequences());
    text += "</Outline>\n<Hyperlinks" + Flag("Enabled", true) + Flag("Highlighted", true) + ">\n";
    text += Elements("Prefix", HyperlinkPrefixes());
    return text + "</Hyperlinks>\n</Settings>\n";
}

}  // namespace kalvex::workbench
