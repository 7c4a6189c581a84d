#include "programs/kalvex-convert/Options.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <span>

#include "programs/CompletionText.h"
#include "programs/ExitStatus.h"

namespace kalvex::convert {

namespace {

constexpr std::string_view kEncodings[] = {"windows-1250", "utf-8"};
constexpr text::Encoding kEncodingOf[] = {text::Encoding::Windows1250, text::Encoding::Utf8};

static_assert(std::size(kEncodings) == std::size(kEncodingOf));

constexpr std::string_view kLineEnds[] = {"crlf", "lf", "keep"};
constexpr text::LineEnds kLineEndsOf[] = {text::LineEnds::CrLf, text::LineEnds::Lf,
                                          text::LineEnds::Keep};
static_assert(std::size(kLineEnds) == std::size(kLineEndsOf));

struct Draft {
    ConvertOptions options = {};
    std::optional<text::LineEnds> lineEnds = {};
    std::string end = {};  // what is printed in the place of all else
};

// `word` is the place of the value among the words of the row.
using Take = void (*)(Draft& draft, const std::string& value, std::size_t word);

struct OptionRow {
    std::string_view name;
    std::string_view shortName;
    std::string_view value;
    std::span<const std::string_view> words;  // none: any value will do
    const char* help;
    Take take;
};

std::string Help();

void TakeTo(Draft& draft, const std::string&, std::size_t word) {
    draft.options.conversion.to = kEncodingOf[word];
}

void TakeFrom(Draft& draft, const std::string&, std::size_t word) {
    draft.options.conversion.from = kEncodingOf[word];
}

void TakeLineEnds(Draft& draft, const std::string&, std::size_t word) {
    draft.lineEnds = kLineEndsOf[word];
}

void TakeMark(Draft& draft, const std::string&, std::size_t) {
    draft.options.conversion.mark = true;
}

void TakeOutput(Draft& draft, const std::string& value, std::size_t) {
    draft.options.output = value;
}

void TakeCheck(Draft& draft, const std::string&, std::size_t) {
    draft.options.check = true;
}

void TakeVersion(Draft& draft, const std::string&, std::size_t) {
    draft.end = "kalvex-convert " KALVEX_VERSION "\n";
}

void TakeHelp(Draft& draft, const std::string&, std::size_t) {
    draft.end = Help();
}

constexpr OptionRow kOptions[] = {
    {"--to", "-t", "ENCODING", kEncodings, "What the files become: windows-1250 (default) or utf-8",
     TakeTo},
    {"--from", "-f", "ENCODING", kEncodings,
     "What they are; by default found out, for each line where lines differ", TakeFrom},
    {"--line-ends", "-e", "WORD", kLineEnds,
     "crlf, lf or keep (default: crlf in Windows-1250, keep in UTF-8)", TakeLineEnds},
    {"--mark", "-m", "", {}, "Begin UTF-8 with its mark, which otherwise goes", TakeMark},
    {"--output",
     "-o",
     "FILE",
     {},
     "Write this file and leave the other as it is; - is the standard output",
     TakeOutput},
    {"--check",
     "-c",
     "",
     {},
     "Change nothing; print the names of the files that would change",
     TakeCheck},
    {"--version", "-V", "", {}, "Print the version and exit", TakeVersion},
    {"--help", "-h", "", {}, "Print this and exit", TakeHelp},
};

std::string Help() {
    std::string help =
        "Usage: kalvex-convert [OPTIONS] [FILE ...]\n"
        "Turns scripts, profiles, data files and definitions into Windows-1250 or UTF-8, each "
        "file\n"
        "as a whole or not at all. Without a FILE, or for -, the standard input goes to the "
        "standard\n"
        "output.\n\n";
    for (const OptionRow& row : kOptions) {
        std::string form = fmt::format("{},{}", row.shortName, row.name);
        if (!row.value.empty()) form += fmt::format(" {}", row.value);
        help += fmt::format("  {}\n      {}\n", form, row.help);
    }
    return help +
           "\nExit status: 0 done; 1 a file could not be read, converted or written, which is "
           "told\n"
           "with its line and column, or with --check would change; 2 wrong usage.\n";
}

std::string WordsOf(const OptionRow& row) {
    std::string list;
    for (const std::string_view word : row.words) programs::AddWord(list, word);
    return list;
}

// Words into options and files, in whatever order they come; the answers tell what is wrong.
class Parser {
  public:
    Parser(const std::vector<std::string>& words, Draft& draft) : m_words(words), m_draft(draft) {}

    std::string Parse() {
        bool optionsEnded = false;
        while (m_next < m_words.size()) {
            const std::string& word = m_words[m_next++];
            const bool isOption = !optionsEnded && word.size() > 1 && word.front() == '-';
            if (isOption && word == "--") {
                optionsEnded = true;
            } else if (!isOption) {
                m_draft.options.files.push_back(word);
            } else if (std::string fault = TakeOption(word); !fault.empty()) {
                return fault;
            }
        }
        return Complete();
    }

  private:
    std::string TakeOption(const std::string& word) {
        const bool isLong = word.starts_with("--");
        const std::string name = isLong ? word.substr(0, word.find('=')) : word.substr(0, 2);
        const auto* row = std::ranges::find_if(kOptions, [&](const OptionRow& option) {
            return option.name == name || option.shortName == name;
        });
        if (row == std::end(kOptions)) {
            return fmt::format("unknown option {}{}", name,
                               programs::Suggest(DescribeCommandLine(), name));
        }
        const bool given = word.size() > name.size();
        if (row->value.empty() && given) return fmt::format("{} takes no value", name);
        std::string value = given ? word.substr(name.size() + (isLong ? 1 : 0)) : std::string();
        if (!row->value.empty() && !given && m_next < m_words.size()) value = m_words[m_next++];
        if (!row->value.empty() && value.empty()) return fmt::format("{} needs a value", name);
        const auto found = std::ranges::find(row->words, value);
        if (!row->words.empty() && found == row->words.end()) {
            return fmt::format("{}: \"{}\" is none of {}", name, value, WordsOf(*row));
        }
        row->take(m_draft, value, static_cast<std::size_t>(found - row->words.begin()));
        return {};
    }

    std::string Complete() {
        ConvertOptions& options = m_draft.options;
        const bool toUtf8 = options.conversion.to == text::Encoding::Utf8;
        if (options.conversion.mark && !toUtf8) return "--mark goes with --to utf-8";
        if (!options.output.empty() && options.check) return "--output goes without --check";
        if (!options.output.empty() && options.files.size() > 1) return "--output takes one FILE";
        if (options.files.empty()) options.files.emplace_back(kStandardStream);
        const text::LineEnds usual = toUtf8 ? text::LineEnds::Keep : text::LineEnds::CrLf;
        options.conversion.lineEnds = m_draft.lineEnds.value_or(usual);
        return {};
    }

    const std::vector<std::string>& m_words;
    Draft& m_draft;
    std::size_t m_next = 0;
};

}  // namespace

ConvertLine ParseConvertLine(const std::vector<std::string>& arguments) {
    Draft draft;
    const std::string fault = Parser(arguments, draft).Parse();
    if (!draft.end.empty()) return {{}, programs::ExitDone, draft.end};
    if (fault.empty()) return {std::move(draft.options)};
    return {{},
            programs::ExitRefused,
            fmt::format("kalvex-convert: {}; kalvex-convert --help tells more\n", fault)};
}

programs::CommandForm DescribeCommandLine() {
    programs::CommandForm form{.name = "kalvex-convert"};
    for (const OptionRow& row : kOptions) {
        programs::ValueForm value = programs::MakeValueForm(row.value);
        if (!row.words.empty()) {
            value.offer = programs::Offer::Words;
            value.detail = WordsOf(row);
        }
        form.options.push_back(
            {std::string(row.name), std::string(row.shortName), std::move(value), row.help});
    }
    form.arguments = {programs::MakeValueForm("FILE")};
    form.lastRepeats = true;
    return form;
}

}  // namespace kalvex::convert
