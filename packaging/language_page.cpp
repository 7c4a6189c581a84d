// For the build: prints the manual page of the language out of its tables, in the language of the
// environment. Its one argument is the folder of the catalogues.
#include <fmt/format.h>

#include <iostream>
#include <string>
#include <string_view>

#include "language/Directives.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/GettextTranslator.h"
#include "text/CodePage.h"

namespace {

using namespace kalvex;

constexpr const char* kHead =
    ".TH KALVEX\\-LANGUAGE 7 \"{}\" \"Kalvex {}\" \"Kalvex\"\n"
    ".SH NAME\nkalvex\\-language \\- statements and functions of Kalvex scripts\n"
    ".SH DESCRIPTION\nA script is a text in Windows\\-1250 with CR LF, one statement a line.\n"
    "A statement begins with its keyword; a comment begins with a semicolon, a label with a "
    "colon.\nA line whose statement cannot finish yet is tried again and holds up no other "
    "script.\n";
constexpr const char* kFoot =
    ".SH SEE ALSO\n.BR kalvex\\-run (1),\n.BR kalvexd (8),\n.BR kalvex.ini (5)\n.PP\n"
    "The reference, with examples, is\n.I language.md\namong the documents.\n";

// Every character that means something to the formatter, or is not one of its own.
std::string Escaped(std::string_view utf8) {
    std::string escaped;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte >= 0x80) {
            // Of two bytes: there is no other in the code page's letters.
            const unsigned next = static_cast<unsigned char>(utf8[++i]);
            escaped += fmt::format("\\[u{:04X}]", (byte & 0x1Fu) << 6 | (next & 0x3Fu));
        } else if (byte == '-') {
            escaped += "\\-";
        } else if (byte == '\\') {
            escaped += "\\e";
        } else {
            escaped += utf8[i];
        }
    }
    return escaped;
}

class Page {
  public:
    explicit Page(const std::string& catalogues) : m_translator(catalogues) {}

    void Section(const char* title) const { std::cout << ".SH " << title << '\n'; }

    // The forms stand one a line; `before` goes in front of each.
    void Entry(std::string_view before, std::string_view forms, std::string_view help) const {
        const std::string shown = InWords(forms);
        for (std::size_t begin = 0; begin <= shown.size();) {
            const std::size_t end = std::min(shown.find('\n', begin), shown.size());
            const std::string form = std::string(before) + shown.substr(begin, end - begin);
            std::cout << (begin == 0 ? ".TP\n" : ".TQ\n") << ".B \"" << Quoted(form) << "\"\n";
            begin = end + 1;
        }
        if (!help.empty()) std::cout << "\\&" << Escaped(InWords(help)) << ".\n";
    }

  private:
    std::string InWords(std::string_view polish) const {
        const std::string key(polish);
        return key.empty() ? key : text::ToUtf8(m_translator.Translate(key.c_str()));
    }

    // Within the quotes of a macro's argument.
    static std::string Quoted(const std::string& form) {
        std::string quoted;
        for (const char c : Escaped(form))
            quoted += c == '"' ? std::string("\\(dq") : std::string(1, c);
        return quoted;
    }

    platform::GettextTranslator m_translator;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const Page page(argv[1]);
    std::cout << fmt::format(kHead, KALVEX_DATE, KALVEX_VERSION);
    page.Section("STATEMENTS");
    for (const engine::StatementRow& row : language::Statements().Rows()) {
        page.Entry("", row.usage, row.help);
    }
    page.Section("FUNCTIONS");
    for (const operands::FunctionRow& row : language::Functions().Rows()) {
        page.Entry(std::string(row.keyword) + " ", row.usage, row.help);
    }
    page.Section("DIRECTIVES");
    for (const language::DirectiveRow& row : language::Directives()) {
        page.Entry("", row.usage, row.help);
    }
    std::cout << kFoot;
    return 0;
}
