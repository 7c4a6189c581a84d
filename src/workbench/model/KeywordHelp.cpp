#include "workbench/model/KeywordHelp.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "language/Directives.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "operands/Conditions.h"
#include "operands/Keywords.h"
#include "operands/OperandEvaluator.h"
#include "operands/TimeProperties.h"
#include "value/Status.h"
#include "workbench/model/ScriptWords.h"

namespace kalvex::workbench {

namespace {

namespace Keyword = operands::Keyword;
using platform::Translatable;

// Before the properties of a time, which come in the order in which they are offered.
constexpr std::string_view kKeywords[] = {
    "ADD",
    "ADD_STATUS",
    "ALARM",
    "ALARM_MEM",
    "ARCH",
    "BEGIN",
    "CALC_IN_LIST",
    "CALCULATE_ERROR",
    "CALL",
    "CHECK_EXEC_ACTIVITY",
    "CHECK_EVENT_TIME",
    "CLOSE_EXEC",
    "CONFIRMED_ALARM",
    "COPY",
    "CREATE_VAR_LIST",
    "CURDATA",
    "DISABLE_NOTIFY",
    "DREP",
    "ELSE",
    "ENABLE_NOTIFY",
    "END",
    "ENDIF",
    "EXEC",
    "FILL_IN_LIST",
    "FORMATED_TIMESTAMP",
    "FROM",
    "FTP_INIT",
    "FTP_RESULT",
    "GET",
    "GET_EXIT_CODE_EXEC",
    "GETDATA",
    "GOTO",
    "HARDLOCK",
    "HREP",
    "HTTP_INIT",
    "HTTP_RESULT",
    "IF",
    "IGNORE_UNKNOWN_ON",
    "IGNORE_UNKNOWN_OFF",
    "INCLUDE",
    "INCLUDE_VAR",
    "INIT",
    "INIT_CALC",
    "INIT_LOAD",
    "INIT_LOAD_REFRESH",
    "INSERT",
    "JOIN",
    "LAST_DAY",
    "LIST",
    "LOCAL",
    "LOCK",
    "MAKE_TIME",
    "MAKE_TIME_FROM_STRING",
    "MGET",
    "MOVE_FIRST",
    "MOVE_NEXT",
    "MOVE_TO",
    "MPUT",
    "MREP",
    "NOT",
    "NOTIFY",
    "NOTIFY_QUEUE_COUNT",
    "NOTIFYING_QUEUE_SIZE",
    "PING_INIT",
    "PING_RESULT",
    "POINTER",
    "PRIORITY",
    "PROCEDURE",
    "PUT",
    "READ_FILE",
    "READY",
    "REMOTE",
    "REMOVE",
    "REMOVE_ALL",
    "REMOVE_STATUS",
    "REMOVEALL",
    "REP_INITED",
    "REP_LOADED",
    "REPORT_INITED",
    "REPORT_LOADED",
    "SET",
    "SET_BY_DEVICE",
    "SET_BY_USER",
    "SET_FILE",
    "SET_STATUS",
    "SETPTR",
    "SETTIME",
    "SLEEP",
    "SOFTLOCK",
    "SPLIT",
    "SREP",
    "START",
    "STATUS",
    "STOP",
    "STRING_APPEND",
    "STRING_COMPARE",
    "STRING_COMPARE_NO_CASE",
    "STRING_FIND",
    "STRING_FIND_ONE_OF",
    "STRING_LEFT",
    "STRING_LEN",
    "STRING_MAKE_LOWER",
    "STRING_MAKE_REVERSE",
    "STRING_MAKE_UPPER",
    "STRING_MID",
    "STRING_REVERSE_FIND",
    "STRING_RIGHT",
    "STRING_SPAN_EXCLUDING",
    "STRING_SPAN_INCLUDING",
    "STRING_TRIM",
    "STRING_TRIM_LEFT",
    "STRING_TRIM_RIGHT",
    "SUBSCRIBE",
    "SUPERVISORY",
    "SORVANE_USER_DESCRIPTION",
    "SORVANE_USER_NAME",
    "TERMINATE_EXEC",
    "THEN",
    "TIME",
    "TO",
    "TO_FLOAT",
    "TO_INT",
    "TO_STRING",
    "TOKENIZE",
    "TRANSMISSION_ERROR",
    "UNKNOWN",
    "UNLOCK",
    "WAITFOR",
    "WINDOWS_USER_NAME",
    "WRITE_FILE",
    "ARCCOS",
    "ARCSIN",
    "ARCCTG",
    "ARCTG",
    "COS",
    "CTG",
    "FACTORIAL",
    "INT",
    "ROUND",
    "SIN",
    "SQR",
    "SQRT",
    "TG",
    "DESCRIPTION",
    "DESCNAME",
    "DISPFORMAT",
    "ISARCH",
    "ISHREP",
    "ISDREP",
    "ISMREP",
    "ISSREP",
    "MAXVAL",
    "MINVAL",
    "NAME",
    "TIMESTAMP",
    "UNIT",
    "BASENAME",
    "AVERAGE",
    "CHECKPOS",
    "COUNT",
    "MAXIMUM",
    "MINIMUM",
    "POS",
    "SUM",
};

// Polish, UTF-8; what is empty is told by the tables of the language, or by nobody.
struct OwnHelp {
    std::string_view keyword;
    const char* purpose;
    const char* usage;
};

constexpr const char* kStatusHelp = Translatable("Status zmiennej");

// What the tables of the language do not tell, or tell otherwise: the purpose of statements of
// which they have the usage alone, the words between operands, and the properties of lists and
// pointers.
constexpr OwnHelp kOwnTexts[] = {
    {Keyword::Begin, Translatable("Początek treści procedury"), ""},
    {Keyword::Call, Translatable("Wywołanie procedury"), ""},
    {"COPY", Translatable("Kopiowanie zmiennej"), ""},
    {"CREATE_VAR_LIST", Translatable("Utworzenie listy nazw zmiennych zgodnych z wzorcem"), ""},
    {Keyword::Else,
     Translatable("Część instrukcji warunkowej, wykonywana przy niespełnionym warunku"), ""},
    {Keyword::End, Translatable("Koniec procedury"), ""},
    {Keyword::Endif, Translatable("Koniec instrukcji warunkowej"), ""},
    {Keyword::From,
     Translatable("Umożliwia określenie początku przedziału czasowego w zapytaniu o zestaw "
                  "wartości z serwera"),
     ""},
    {Keyword::GetData,
     Translatable(
         "Umożliwia określenie listy, do której mają zostać skopiowane wartości z zapytania"),
     ""},
    {Keyword::Goto, Translatable("Przejście do etykiety"), ""},
    {Keyword::If, Translatable("Instrukcja warunkowa"), ""},
    {"LIST", Translatable("Deklaracja listy"), ""},
    {"LOCAL", Translatable("Deklaracja zmiennej lokalnej"), ""},
    {Keyword::Not, Translatable("Zaprzeczenie warunku"),
     Translatable("IF NOT <warunek> THEN ... ELSE ... ENDIF\nIF NOT <warunek> GOTO <etykieta>")},
    {"POINTER", Translatable("Deklaracja wskaźnika"), ""},
    {Keyword::Procedure, Translatable("Definicja procedury"), ""},
    {"READY", "", Translatable("READY <zmienna>.<typ_danych>")},
    {"REMOTE", Translatable("Deklaracja zmiennej zdalnej"), ""},
    {"REP_INITED", "", Translatable("REP_INITED <zmienna>.<typ_danych>")},
    {"REP_LOADED", "", Translatable("REP_LOADED <zmienna>.<typ_danych>")},
    {"SET", Translatable("Ustawienie wartości zmiennej"), ""},
    {"SETPTR", Translatable("Ustawienie wskaźnika na zmienną"), ""},
    {Keyword::Start, Translatable("Włączenie rejestracji zmiennych"), "SUBSCRIBE START"},
    {Keyword::Stop, Translatable("Wyłączenie rejestracji zmiennych"), "SUBSCRIBE STOP"},
    // The usages of these two have always stood crossed over.
    {"STRING_SPAN_EXCLUDING", "", Translatable("STRING_SPAN_INCLUDING <tekst> <znaki>")},
    {"STRING_SPAN_INCLUDING", "", Translatable("STRING_SPAN_EXCLUDING <tekst> <znaki>")},
    {Keyword::Then, Translatable("Początek bloku, wykonywanego przy spełnionym warunku"),
     Translatable("IF <warunek> THEN ... ELSE ... ENDIF")},
    {Keyword::Time, Translatable("Bieżący czas"), ""},
    {Keyword::To,
     Translatable(
         "Umożliwia określenie końca przedziału czasowego w zapytaniu o zestaw wartości z serwera"),
     ""},
    {"BASENAME", Translatable("Nazwa zmiennej, na którą wskazuje wskaźnik"),
     Translatable("<wskaźnik>.BASENAME")},
    {"AVERAGE", Translatable("Średnia elementów listy"), Translatable("<lista>.AVERAGE")},
    {"CHECKPOS", Translatable("Czy iterator wskazuje element listy"),
     Translatable("<lista>.CHECKPOS")},
    {"COUNT", Translatable("Liczba elementów listy"), Translatable("<lista>.COUNT")},
    {"MAXIMUM", Translatable("Największy element listy"), Translatable("<lista>.MAXIMUM")},
    {"MINIMUM", Translatable("Najmniejszy element listy"), Translatable("<lista>.MINIMUM")},
    {"POS", Translatable("Położenie iteratora listy"), Translatable("<lista>.POS")},
    {"SUM", Translatable("Suma elementów listy"), Translatable("<lista>.SUM")},
};

// What is known of a keyword, in Polish, UTF-8.
struct KnownHelp {
    std::string_view purpose = {};
    std::string_view usage = {};  // a form a line
    bool isArguments = false;     // the forms are without the keyword
};

// The row of a table of the language whose name is the keyword, or null.
template <class Rows, class Row>
const Row* FindRow(const Rows& rows, std::string_view Row::*name, std::string_view keyword) {
    const auto row = std::ranges::find(rows, keyword, name);
    return row == rows.end() ? nullptr : &*row;
}

// The same where the names begin with a dot.
template <class Rows, class Row>
const Row* FindProperty(const Rows& rows, std::string_view Row::*name, std::string_view keyword) {
    const auto row = std::ranges::find_if(
        rows, [name, keyword](const Row& one) { return (one.*name).substr(1) == keyword; });
    return row == rows.end() ? nullptr : &*row;
}

KnownHelp FromStatements(std::string_view keyword) {
    using engine::StatementRow;
    const auto* row = FindRow(language::Statements().Rows(), &StatementRow::keyword, keyword);
    if (row == nullptr) return {};
    // A word by itself needs no form.
    return {row->help, row->usage == keyword ? std::string_view() : row->usage};
}

KnownHelp FromDirectives(std::string_view keyword) {
    const auto* row = FindRow(language::Directives(), &language::DirectiveRow::keyword, keyword);
    return row == nullptr ? KnownHelp{} : KnownHelp{row->help, row->usage};
}

KnownHelp FromFunctions(std::string_view keyword) {
    using operands::FunctionRow;
    const auto* row = FindRow(language::Functions().Rows(), &FunctionRow::keyword, keyword);
    return row == nullptr ? KnownHelp{} : KnownHelp{row->help, row->usage, true};
}

KnownHelp FromConditions(std::string_view keyword) {
    using operands::ConditionWordRow;
    const auto* row = FindRow(operands::ConditionWords(), &ConditionWordRow::word, keyword);
    return row == nullptr ? KnownHelp{} : KnownHelp{row->help};
}

KnownHelp FromVariableProperties(std::string_view keyword) {
    using operands::VariablePropertyRow;
    const auto* row =
        FindProperty(operands::VariableProperties(), &VariablePropertyRow::name, keyword);
    return row == nullptr ? KnownHelp{} : KnownHelp{row->help};
}

KnownHelp FromTimeProperties(std::string_view keyword) {
    using operands::TimeProperty;
    const auto* row = FindProperty(operands::TimeProperties(), &TimeProperty::name, keyword);
    return row == nullptr ? KnownHelp{} : KnownHelp{row->help};
}

KnownHelp FromValueKinds(std::string_view keyword) {
    const auto* row = FindRow(value::ValueKinds(), &value::ValueKindRow::suffix, keyword);
    return row == nullptr ? KnownHelp{} : KnownHelp{row->help};
}

KnownHelp FromStatusWords(std::string_view keyword) {
    const auto* row = FindRow(value::StatusWords(), &value::StatusWord::word, keyword);
    return row == nullptr ? KnownHelp{} : KnownHelp{kStatusHelp};
}

// In the order in which the tables are asked.
constexpr KnownHelp (*kTables[])(std::string_view keyword) = {
    FromStatements,         FromDirectives,     FromFunctions,  FromConditions,
    FromVariableProperties, FromTimeProperties, FromValueKinds, FromStatusWords,
};

KnownHelp FindHelp(std::string_view keyword) {
    KnownHelp found;
    for (const auto table : kTables) {
        found = table(keyword);
        if (!found.purpose.empty() || !found.usage.empty()) break;
    }
    const auto* const own = std::ranges::find(kOwnTexts, keyword, &OwnHelp::keyword);
    if (own == std::end(kOwnTexts)) return found;
    if (*own->purpose != 0) found.purpose = own->purpose;
    if (*own->usage == 0) return found;
    return {found.purpose, own->usage};
}

// Texts of tables are whole literals, so a null stands behind them.
std::string Translated(const platform::Translator& translator, std::string_view polish) {
    return polish.empty() ? std::string() : translator.Translate(polish.data());
}

// A form a line: each begins with the keyword.
std::string WithKeyword(std::string_view keyword, std::string_view arguments) {
    std::string forms;
    for (std::size_t start = 0; start <= arguments.size();) {
        const std::size_t end = std::min(arguments.find('\n', start), arguments.size());
        if (start > 0) forms += '\n';
        forms.append(keyword).append(" ").append(arguments.substr(start, end - start));
        start = end + 1;
    }
    return forms;
}

std::string HelpTextOf(std::string_view keyword, const platform::Translator& translator) {
    const KnownHelp known = FindHelp(keyword);
    const std::string purpose = Translated(translator, known.purpose);
    if (known.usage.empty()) return purpose;
    const std::string usage = Translated(translator, known.usage);
    return purpose + '\n' + (known.isArguments ? WithKeyword(keyword, usage) : usage);
}

}  // namespace

KeywordHelp::KeywordHelp(const platform::Translator& translator) {
    const std::vector<std::string_view> keywords = HelpKeywords();
    for (auto keyword = keywords.rbegin(); keyword != keywords.rend(); ++keyword) {
        m_texts[*keyword] = HelpTextOf(*keyword, translator);
    }
}

std::string_view KeywordHelp::TextOf(std::string_view word) const {
    const auto row = m_texts.find(word);
    return row == m_texts.end() ? std::string_view() : row->second;
}

std::vector<std::string_view> HelpKeywords() {
    std::vector<std::string_view> keywords(std::begin(kKeywords), std::end(kKeywords));
    keywords.insert(keywords.end(), TimeMembers().begin(), TimeMembers().end());
    return keywords;
}

}  // namespace kalvex::workbench
