#include "programs/glossary/ManualPage.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "text/CodePage.h"

namespace kalvex::glossary {

namespace {

constexpr const char* kHead =
    ".TH KALVEX\\-LANGUAGE 7 \"{}\" \"Kalvex {}\" \"Kalvex\"\n"
    ".SH NAME\nkalvex\\-language \\- statements, functions and other words of Kalvex scripts\n"
    ".SH DESCRIPTION\nA script is a text in Windows\\-1250 with CR LF, one statement a line.\n"
    "A statement begins with its keyword; a comment begins with a semicolon, a label with a "
    "colon.\nA line whose statement cannot finish yet is tried again and holds up no other "
    "script.\n";
constexpr const char* kFoot =
    ".SH SEE ALSO\n.BR kalvex\\-run (1),\n.BR kalvexd (8),\n.BR kalvex.ini (5)\n.PP\n"
    "The reference, with examples, is\n.I language.md\namong the documents.\n";

// What the formatter would take for something else.
constexpr struct {
    char sign;
    const char* written;
} kSigns[] = {
    {'-', "\\-"}, {'\\', "\\e"}, {'^', "\\(ha"}, {'~', "\\(ti"}, {'"', "\\(dq"},
};

std::string Escaped(std::string_view utf8) {
    std::string escaped;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte >= 0x80) {
            // Of two bytes: there is no other in the code page's letters.
            const unsigned next = static_cast<unsigned char>(utf8[++i]);
            escaped += fmt::format("\\[u{:04X}]", (byte & 0x1Fu) << 6 | (next & 0x3Fu));
            continue;
        }
        const auto* const row =
            std::ranges::find(kSigns, utf8[i], [](const auto& one) { return one.sign; });
        if (row == std::end(kSigns)) {
            escaped += utf8[i];
        } else {
            escaped += row->written;
        }
    }
    return escaped;
}

// A paragraph whose tags stand one a line.
std::string Paragraph(const std::vector<std::string>& tags, const std::string& text) {
    std::string paragraph;
    for (const std::string& tag : tags) {
        paragraph +=
            fmt::format("{}\n.B \"{}\"\n", paragraph.empty() ? ".TP" : ".TQ", Escaped(tag));
    }
    if (!text.empty()) paragraph += fmt::format("\\&{}.\n", Escaped(text));
    return paragraph;
}

std::string Paragraphs(const Section& section) {
    std::string paragraphs;
    for (const Entry& entry : section.entries) {
        std::vector<std::string> tags = entry.forms;
        if (section.layout != Layout::Forms) tags.insert(tags.begin(), entry.label);
        paragraphs += Paragraph(tags, entry.purpose);
    }
    return paragraphs;
}

// Filled, so that a long one goes on in the next line.
std::string Lines(const Section& section) {
    std::string lines;
    for (const Entry& entry : section.entries) {
        lines += fmt::format("\\&{}\n.br\n", Escaped(entry.label));
    }
    return lines;
}

std::string InCapitals(const std::string& heading) {
    return text::ToUtf8(text::ToUpper(text::FromUtf8(heading)));
}

}  // namespace

std::string ManualPage(std::span<const Section> glossary, std::string_view version,
                       std::string_view date) {
    std::string page = fmt::format(kHead, date, version);
    for (const Section& section : glossary) {
        page += fmt::format(".SH {}\n", Escaped(InCapitals(section.heading)));
        page += section.layout == Layout::Lines ? Lines(section) : Paragraphs(section);
    }
    return page + kFoot;
}

}  // namespace kalvex::glossary
