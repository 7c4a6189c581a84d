#include "differential/Vocabulary.h"

namespace kalvex::differential {

namespace {

constexpr Form kStatements[] = {
    {40, "SET %N = %f"},
    {14, "SET %N = %x"},
    {12, "SET %C = %C + 1"},
    {12, "SET %T = %y"},
    {4, "SET %T = %t"},
    {6, "SET %N = %z"},
    {4, "SET %V = %x"},
    {4, "SET %N = %n"},
    {3, "SET %N = %i"},
    {2, "SET %T = %i"},
    {3, "SET %D = %d"},
    {3, "SET %V.TIMESTAMP = %d"},
    {2, "SET %L = %x"},
    {4, "SET %P = %x"},
    {2, "SET %U = %x"},
    {1, "SET %N %f"},
    {1, "SET = %f"},
    {5, "LOCAL %N = %x"},
    {2, "LOCAL %N"},
    {2, "LOCAL %T = %t"},
    {2, "LOCAL %U = %x"},
    {1, "LOCAL %L = %x"},
    {1, "LOCAL %N.HREP = %x"},
    {2, "LIST %L"},
    {1, "LIST %N"},
    {2, "POINTER %P"},
    {1, "POINTER %N"},
    {6, "SETPTR %P = %q"},
    {2, "SETPTR %P = %t"},
    {1, "SETPTR %P = %P.BASENAME"},
    {1, "SETPTR %N = %q"},
    {1, "SETPTR %P = %x"},
    {3, "COPY %V %N"},
    {2, "COPY %V %P"},
    {1, "COPY %P %P"},
    {1, "COPY %U %U"},
    {2, "CREATE_VAR_LIST %L *"},
    {1, "CREATE_VAR_LIST %L %t"},
    {1, "CREATE_VAR_LIST %L ?"},
    {7, "ADD %L %o"},
    {3, "ADD %L %t"},
    {3, "INSERT %L %i %o"},
    {3, "MOVE_FIRST %L"},
    {4, "MOVE_NEXT %L"},
    {3, "MOVE_TO %L %i"},
    {2, "MOVE_TO %L %n"},
    {3, "REMOVE %L %i"},
    {1, "REMOVE_ALL %L"},
    {1, "REMOVEALL %L"},
    {1, "MOVE_NEXT %U"},
    {3, "SPLIT %T ; %L"},
    {2, "SPLIT %T \" ,\" %L"},
    {1, "SPLIT %U a %L"},
    {2, "FILL_IN_LIST %L %i %s 1710050400 1710061200 HREP"},
    {2, "FILL_IN_LIST %L %i %s TIME.FIRSTLOCALDAY TIME HREP"},
    {1, "FILL_IN_LIST %L %o %s 1709050400 1711061200 DREP"},
    {3, "CALC_IN_LIST %L.SUM %N %s"},
    {2, "CALC_IN_LIST %L.AVERAGE %N"},
    {2, "CALC_IN_LIST %L.MAXIMUM %N %s FROM 2024 3 10 TO %d"},
    {2, "CALC_IN_LIST %L.COUNT %N %n"},
    {1, "CALC_IN_LIST %L.MINIMUM %P %s FROM %D TO TIME"},
    {4, "SET_STATUS %V %s"},
    {4, "ADD_STATUS %V %s"},
    {4, "REMOVE_STATUS %V %s"},
    {2, "ADD_STATUS %P %s"},
    {2, "LOCK"},
    {2, "UNLOCK"},
    {2, "IGNORE_UNKNOWN_ON"},
    {2, "IGNORE_UNKNOWN_OFF"},
    {3, "PRIORITY %i"},
    {5, "PRIORITY 1"},
    {5, "SLEEP %w"},
    {2, "SLEEP %T"},
    {1, "SLEEP %U"},
    {3, "WAITFOR %w"},
    {3, "WAITFOR %w, %w"},
    {1, "WAITFOR %w %T"},
    {1, "WAITFOR"},
    {1, "SETTIME 2024 3 10 %i 59 55"},
    {1, "SUBSCRIBE STOP"},
    {2, "SUBSCRIBE START"},
    {1, "SUBSCRIBE %U"},
    {4, "GOTO %b"},
    {10, "IF %c GOTO %b"},
    {2, "if %c goto %b"},
    {2, "IF %f"},
    {14, "CALL %p(%a)"},
    {2, "CALL %p (%a)"},
    {1, "CALL %p"},
    {1, "CALL"},
    {1, "END"},
    {1, "BEGIN"},
    {1, "PROCEDURE"},
    {1, "ELSE"},
    {1, "%U = %x"},
    {1, "%N"},
    {2, ""},
    {2, "; uwaga SET A = 1"},
    {1, "   "},
    {1, "READ_FILE %t %U -A %N"},
    {1, "WRITE_FILE %t %U -A %N"},
    {1, "SET_FILE %t %U %o"},
    {1, "EXEC %t %U"},
    {1, "TERMINATE_EXEC %n %i"},
    {1, "CLOSE_EXEC %n %i"},
    {1, "PING_INIT %t"},
    {1, "FTP_INIT %t %i"},
    {1, "HTTP_INIT %t %i"},
    {1, "INCLUDE dolaczony.kx"},
};

constexpr Form kSources[] = {
    {8, "REMOTE %R %m"},
    {1, "REMOTE %N %m"},
    {1, "REMOTE %R srv"},
    {16, "SET %N = %R"},
    {10, "SET %N = %R + %f"},
    {6, "SET %R = %x"},
    {3, "SET %R.%k = %n"},
    {6, "IF %R > %n GOTO %b"},
    {4, "IF UNKNOWN %R GOTO %b"},
    {4, "IF NOT READY %R.%k GOTO %b"},
    {3, "COPY %R %N"},
    {1, "COPY %R %R"},
    {3, "LOCK"},
    {3, "UNLOCK"},
    {3, "SETPTR %P = \"%R\""},
    {2, "SET %T = %R.NAME"},
    {2, "SET %N = %R.ISHREP"},
    {2, "SET %T = %R.UNIT"},
    {2, "SET %N = %R.TIMESTAMP"},
    {2, "ADD %L %R"},
    {5, "GET %R HREP 2024 3 10 7"},
    {3, "GET %R %k %d %i"},
    {2, "GET %R.%k"},
    {2, "GET %R DREP 2024 3 10 -1"},
    {1, "GET %R SREP 2024 %i"},
    {3, "PUT %R HREP 2024 3 10 7 %o"},
    {2, "PUT %R %k %d %o"},
    {2, "PUT %R.%k"},
    {2, "INIT %R DREP 2024 3 10"},
    {1, "INIT %R %k 2024 3 10 %i"},
    {2, "INIT_LOAD %R HREP 2024 3 10 7"},
    {1, "INIT_LOAD %R ARCH"},
    {2, "INIT_LOAD_REFRESH %R ARCH 2024 3 10 7"},
    {2, "INIT_CALC %R HREP 2024 3 10 7"},
    {4, "MGET %R ARCH FROM 2024 3 10 TO 2024 3 11"},
    {2, "MGET %R HREP FROM 2024 3 10 5 TO %d"},
    {3, "MGET %R GETDATA %L"},
    {2, "MPUT %R %k %L"},
    {2, "MPUT %R ARCH %L"},
    {3, "ENABLE_NOTIFY HREP srv"},
    {1, "ENABLE_NOTIFY %k srv"},
    {2, "DISABLE_NOTIFY HREP srv"},
    {3, "SET %N = NOTIFY HREP srv"},
    {2, "SET %N = NOTIFY_QUEUE_COUNT HREP srv"},
    {1, "SET %N = NOTIFYING_QUEUE_SIZE %k srv"},
    {1, "INCLUDE_VAR srv Z*"},
    {1, "INCLUDE_VAR dwa"},
};

constexpr Form kTextFunctions[] = {
    {5, "STRING_APPEND %t %t"},
    {3, "STRING_LEFT %t %i"},
    {3, "STRING_RIGHT %t %i"},
    {3, "STRING_MID %t %i %i"},
    {2, "STRING_MAKE_UPPER %t"},
    {2, "STRING_MAKE_LOWER %t"},
    {2, "STRING_MAKE_REVERSE %t"},
    {1, "STRING_TRIM %t %t"},
    {1, "STRING_TRIM_LEFT %t \" a\""},
    {1, "STRING_TRIM_RIGHT %t \"a \""},
    {1, "STRING_SPAN_EXCLUDING %t %t"},
    {1, "STRING_SPAN_INCLUDING %t %t"},
    {4, "TO_STRING %n"},
    {4, "TO_STRING %n %g"},
    {3, "TOKENIZE %t ; %C"},
    {2, "TOKENIZE %T \", \" %N"},
    {3, "JOIN %L %t"},
    {2, "JOIN %L ;"},
    {1, "JOIN %U"},
    {1, "FORMATED_TIMESTAMP %V %h"},
    {1, "FORMATED_TIMESTAMP %N"},
    {1, "SORVANE_USER_NAME"},
    {1, "SORVANE_USER_DESCRIPTION"},
    {1, "WINDOWS_USER_NAME"},
};

constexpr Form kFunctions[] = {
    {3, "STRING_LEN %t"},
    {3, "STRING_COMPARE %t %t"},
    {2, "STRING_COMPARE_NO_CASE %t %t 0 == 0"},
    {3, "STRING_FIND %t %t %i"},
    {2, "STRING_FIND %t %t 0 >= %n"},
    {2, "STRING_FIND_ONE_OF %t %t"},
    {2, "STRING_REVERSE_FIND %t %t"},
    {2, "TO_FLOAT %t"},
    {2, "TO_INT %t"},
    {2, "SIN %n"},
    {1, "COS %n"},
    {1, "TG %n"},
    {1, "CTG %n"},
    {1, "ARCSIN %n"},
    {1, "ARCCOS %n"},
    {1, "ARCTG %n"},
    {1, "ARCCTG %n"},
    {1, "SQR %n"},
    {2, "SQRT %n"},
    {2, "FACTORIAL %i"},
    {2, "INT %o"},
    {3, "ROUND %n %i"},
    {3, "STATUS %V"},
    {3, "STATUS %V %s"},
    {2, "SET_STATUS %V %s"},
    {2, "ADD_STATUS %V %s"},
    {2, "REMOVE_STATUS %V %s"},
    {2, "TIMESTAMP %V"},
    {3, "MAKE_TIME 2024 3 %i %i"},
    {1, "MAKE_TIME TIME.YEAR"},
    {1, "MAKE_TIME %d"},
    {2, "MAKE_TIME_FROM_STRING \"2024-03-10 07:00:00\""},
    {1, "MAKE_TIME_FROM_STRING %t %h"},
    {2, "LAST_DAY 2024 %i"},
    {4, "CHECK_EVENT_TIME %e"},
    {3, "CHECK_EVENT_TIME %e %i"},
    {2, "CHECK_EVENT_TIME %e %d"},
    {1, "CHECK_EVENT_TIME %e %d %i"},
    {1, "FILL_IN_LIST %L %i %s 1710050400 1710061200 HREP"},
    {2, "CALC_IN_LIST %L.SUM %N %s"},
    {1, "CALC_IN_LIST %L.MINIMUM %N %s FROM 2024 3 TO TIME"},
    {1, "NOTIFY HREP srv"},
    {1, "READ_FILE %t %U"},
    {1, "WRITE_FILE %t %U"},
    {1, "SET_FILE %t %U %o"},
    {1, "EXEC %t"},
    {1, "CHECK_EXEC_ACTIVITY %n"},
    {1, "GET_EXIT_CODE_EXEC %n"},
    {1, "TERMINATE_EXEC %n"},
    {1, "CLOSE_EXEC %n %i"},
    {1, "PING_RESULT %t"},
    {1, "FTP_RESULT %t"},
    {1, "HTTP_RESULT %t"},
};

constexpr Form kConditions[] = {
    {24, "%n %= %n"},
    {8, "%f %= %f"},
    {8, "%f"},
    {3, "%n %= %n && %n %= %n"},
    {3, "(%n %= %n) || (%f)"},
    {8, "%T == %t"},
    {5, "%t != %t"},
    {4, "%T == %t & %n %= %n"},
    {4, "%T == %t | %T == %t | %n > %n"},
    {3, "NOT %T == %t"},
    {3, "NOT %n %= %n"},
    {2, "NOT(%n %= %n)"},
    {3, "UNKNOWN %V"},
    {3, "NOT UNKNOWN %V"},
    {2, "READY %V"},
    {2, "SET_BY_USER %V"},
    {1, "REP_LOADED %V.HREP"},
    {1, "REP_INITED %V.DREP"},
    {2, "UNKNOWN %V | %n %= %n"},
    {2, "UNKNOWN %V & SET_BY_USER %V"},
    {3, "STRING_COMPARE %t %t 0 == 0"},
    {2, "STRING_FIND %t %t 0 >= 0"},
    {2, "CHECK_EVENT_TIME %e %i"},
    {2, "CHECK_EVENT_TIME %e"},
    {2, "%L.CHECKPOS == 1"},
    {2, "%L.COUNT > %i"},
    {1, "%n = %n"},
    {1, "(%T == %t)"},
    {1, "%n %= %n & %f"},
    {1, "%n %="},
    {1, "%U"},
    {1, ""},
};

constexpr Form kOperands[] = {
    {44, "%N"},          {6, "%C"},
    {4, "%V"},           {3, "%T"},
    {3, "%P"},           {3, "%L"},
    {3, "%R"},           {3, "%D"},
    {2, "%U"},           {2, "%L.COUNT"},
    {1, "%L.SUM"},       {1, "%L.POS"},
    {1, "%L.AVERAGE"},   {1, "%L.MINIMUM"},
    {1, "%L.MAXIMUM"},   {1, "%L.CHECKPOS"},
    {2, "%V.TIMESTAMP"}, {1, "%N.NAME"},
    {1, "%P.BASENAME"},  {1, "%P.NAME"},
    {2, "TIME"},         {3, "TIME.HOUR"},
    {1, "TIME.MIN.SEC"}, {1, "%D.DAY"},
    {1, "%N.HOUR"},      {1, "1710050400.HOUR"},
    {1, "%U.COUNT"},     {1, "%U.NAME"},
    {1, "%P.HREP"},      {1, "@daily"},
    {1, "%N.FOO"},       {1, ".%N"},
    {1, "%P.TIMESTAMP"},
};

constexpr Form kTextOperands[] = {
    {40, "%T"},     {5, "%N"},          {2, "%P"}, {2, "%L"},   {2, "%R"},
    {3, "%N.NAME"}, {1, "%P.BASENAME"}, {1, "%U"}, {1, "TIME"}, {1, "@hourly"},
};

constexpr std::string_view kPlainNames[] = {"A",    "B",   "C",     "M",
                                            "SUMA", "ŻUK", "A_1",   "Licznik",
                                            "x1",   "_y",  "wynik", "DLUGA_NAZWA_ZMIENNEJ_1"};
constexpr std::string_view kOddNames[] = {
    "1E5",        "2X",   "-3",   "@daily", "SIN",     "SET",       "IF",        "TIME",  "NAME",
    "COUNT",      "THEN", "GOTO", "HREP",   "a-b",     "P",         ".A",        "..B",   "ROUND",
    "STRING_LEN", "1",    "inf",  "nan",    "0x10",    "NOT",       "TO",        "FROM",  "ALARM",
    "E",          "1.",   "e3",   "HOUR",   "UNKNOWN", "TIMESTAMP", "READY",     "abs",   "sin",
    "1A",         "A:B",  "A*",   "-",      "3E",      "END",       "MAKE_TIME", "TIMES", "@hourly",
    "@X",         "A.B",  "?",    "TIME1"};
constexpr std::string_view kOddLabels[] = {"w",    "koniec", "SET",  "A",   "1",
                                           "TIME", "a.b",    "Łąka", "l-1", "THEN"};
constexpr std::string_view kParameters[] = {
    "a", "b",     "ile", "suma", "A",       "SET",  "THEN",   "w", "HREP", "GOTO",
    "N", "lista", "=",   "S",    "UNKNOWN", "TIME", "koniec", "x", "1",    "\"a\""};
constexpr std::string_view kSuffixes[] = {"",      "",         "",      "",      ".DREP",
                                          "",      ".CURDATA", ".HREP", ".hrep", ".MREP",
                                          ".SREP", ".ARCH",    ".XREP", ".Hrep"};
constexpr std::string_view kNumberLiterals[] = {"0",
                                                "1",
                                                "2",
                                                "3",
                                                "7",
                                                "10",
                                                "-1",
                                                "-0.5",
                                                "0.5",
                                                "2.5",
                                                "100",
                                                "0.1",
                                                "3000000000",
                                                "2024",
                                                "5.0",
                                                "1e3",
                                                "1E5",
                                                "1e400",
                                                "1.",
                                                ".5",
                                                "-7",
                                                "00012",
                                                "1e-3",
                                                "3001",
                                                "-2147483649",
                                                "2147483647",
                                                "1,5",
                                                "0x10",
                                                "12abc",
                                                "+4",
                                                "--1",
                                                "1.5e2.5",
                                                "9223372036854775807",
                                                "9223372036854775808",
                                                "4294967296",
                                                "0.30000000000000004"};
constexpr std::string_view kSmallNumbers[] = {"0", "1", "2", "3",  "4",  "5",   "6",  "7",
                                              "2", "1", "9", "12", "-1", "1.5", "23", "50"};
constexpr std::string_view kTextLiterals[] = {"\"a\"",           "\"abc\"",
                                              "\"Ala ma kota\"", "\"  dwa  odstepy  \"",
                                              "\"12.5\"",        "\"7 szt\"",
                                              "\";\"",           "\",\"",
                                              "\"Łódź\"",        "\"A\"",
                                              "\"a;b;;c\"",      "\"b\"",
                                              "\" \"",           "\"\"",
                                              "\"GOTO\"",        "\"plik.NAME\"",
                                              "\"x.y\"",         "\"TIME.HOUR\"",
                                              "\"niedomkniety",  "\"a&b\"",
                                              "\"(1)\"",         "\"2024-03-10 07:00:00\"",
                                              "\"1,2,,3\"",      "\"ALARM\"",
                                              "\"0:00.02\"",     "\"koniec\"",
                                              "\"ab\"",          "\"1e3\"",
                                              "\"a	b\"",    "\"THEN\"",
                                              "\"-5\"",          "\"@daily\"",
                                              "\"L.COUNT\"",     "\"%05d\"",
                                              "\"x\"",           "\"3\""};
constexpr std::string_view kOperators[] = {
    " + ", " + ", " + ",   " - ",   " - ", " * ",  " * ",          " / ",  " # ",  " & ",
    " | ", " ^ ", " == ",  " != ",  " < ", " <= ", " > ",          " >= ", " && ", " || ",
    "+",   "*",   "/",     "  +  ", " % ", "-",    "	-	", " -",   "- ",   " += ",
    " = ", "++",  " + * ", " , ",   ">",   "==",   " ! ",          " ~ "};
constexpr std::string_view kFormulaFunctions[] = {
    "SIN", "COS",   "CTG", "ARCSIN", "ARCCOS", "ARCTG", "ARCCTG",    "SQRT", "SQR",
    "INT", "ROUND", "NOT", "sin",    "Int",    "TG",    "FACTORIAL", "ROUND"};
constexpr std::string_view kComparisons[] = {"==", "!=", "<", "<=", ">", ">=", "<", ">"};
constexpr std::string_view kTimeWords[] = {"TIME",
                                           "TIME.FIRSTLOCALHOUR",
                                           "TIME.FIRSTLOCALDAY",
                                           "TIME.LASTLOCALMONTH",
                                           "1710050400",
                                           "TIME.PREVDAY",
                                           "TIME.NEXTLOCALMONTH",
                                           "1710111600.GMTTOLOCAL",
                                           "TIME.FIRSTGMTYEAR",
                                           "TIME.NEXTGMTYEAR",
                                           "0",
                                           "TIME.LOCALTOGMT"};
constexpr std::string_view kStatuses[] = {
    "UNKNOWN", "ALARM",       "SET_BY_USER", "0",   "1",  "REPORT_LOADED", "3", "LOCK",
    "128",     "SUPERVISORY", "65535",       "FOO", "-1", "70000"};
constexpr std::string_view kScheduleEntries[] = {"@daily",
                                                 "@hourly",
                                                 "@every_minute",
                                                 "@monthly",
                                                 "@nigdy",
                                                 "\"@weekly\"",
                                                 "\"0 0 7 * * *\"",
                                                 "\"*/2 * * * * *\"",
                                                 "\"0-10 59 6 * * Sun\"",
                                                 "\"* * 6-21 * * Mon-Fri\"",
                                                 "\"0 * * 10 Mar *\"",
                                                 "\"x\"",
                                                 "\"0 0 7 10 3 0\"",
                                                 "\"5,6,7 * * * * 0-7\"",
                                                 "*"};
constexpr std::string_view kKinds[] = {"HREP",    "DREP", "MREP", "SREP", "ARCH",
                                       "CURDATA", "hrep", "HREP", "HREP"};
constexpr std::string_view kSpans[] = {"1",        "2",    "0",    "0.01",    "0:00.01", "7:00.00",
                                       "7:00.05",  "0.30", "1:30", "30",      "15.00",   "0:20.00",
                                       "23:59.59", "59",   "70",   "2:30.00", "100"};
constexpr std::string_view kNumberFormats[] = {"\"%05d\"", "\"%8.3f\"", "\"%.0f\"", "\"%d\"",
                                               "\"%s\"",   "\"x\"",     "\"%02d\"", "\"%-5d\""};
constexpr std::string_view kTimeFormats[] = {"\"%Y-%m-%d %H:%M:%S\"", "\"%d.%m.%Y\"", "\"%H\"",
                                             "\"%q\"", "\"%Y-%m-%d\""};
constexpr std::string_view kServerVariables[] = {
    "srv@Z1",    "srv@Z1",   "srv@Z2",        "dwa@Z1",    "srv@OPIS",
    "srv@NIEMY", "srv@BRAK", "\"srv@Z 3.A\"", "srv@ZAKAZ", "trzy@X"};
constexpr std::string_view kJunkWords[] = {"SET", "=",  "THEN", "GOTO", "(",   ")", ";",  "&",
                                           "|",   "\"", ",",    "NOT",  "A",   "1", "==", ".",
                                           "-",   "@",  "ELSE", "+",    "FOO", "ł", ":",  "IF"};
constexpr std::string_view kOperatorTexts[] = {
    "5", "-2.5", "\"tekst\"", "*", "$", "#7", "#\"x\"", "", "0x1F", "nan", "\"A\"", "1", "1e300"};

}  // namespace

std::span<const Form> StatementForms() {
    return kStatements;
}
std::span<const Form> SourceForms() {
    return kSources;
}
std::span<const Form> TextFunctionForms() {
    return kTextFunctions;
}
std::span<const Form> FunctionForms() {
    return kFunctions;
}
std::span<const Form> ConditionForms() {
    return kConditions;
}
std::span<const Form> OperandForms() {
    return kOperands;
}
std::span<const Form> TextOperandForms() {
    return kTextOperands;
}

std::span<const std::string_view> PlainNames() {
    return kPlainNames;
}
std::span<const std::string_view> OddNames() {
    return kOddNames;
}
std::span<const std::string_view> OddLabels() {
    return kOddLabels;
}
std::span<const std::string_view> Parameters() {
    return kParameters;
}
std::span<const std::string_view> Suffixes() {
    return kSuffixes;
}
std::span<const std::string_view> NumberLiterals() {
    return kNumberLiterals;
}
std::span<const std::string_view> SmallNumbers() {
    return kSmallNumbers;
}
std::span<const std::string_view> TextLiterals() {
    return kTextLiterals;
}
std::span<const std::string_view> Operators() {
    return kOperators;
}
std::span<const std::string_view> FormulaFunctions() {
    return kFormulaFunctions;
}
std::span<const std::string_view> Comparisons() {
    return kComparisons;
}
std::span<const std::string_view> TimeWords() {
    return kTimeWords;
}
std::span<const std::string_view> Statuses() {
    return kStatuses;
}
std::span<const std::string_view> ScheduleEntries() {
    return kScheduleEntries;
}
std::span<const std::string_view> Kinds() {
    return kKinds;
}
std::span<const std::string_view> Spans() {
    return kSpans;
}
std::span<const std::string_view> NumberFormats() {
    return kNumberFormats;
}
std::span<const std::string_view> TimeFormats() {
    return kTimeFormats;
}
std::span<const std::string_view> ServerVariables() {
    return kServerVariables;
}
std::span<const std::string_view> JunkWords() {
    return kJunkWords;
}
std::span<const std::string_view> OperatorTexts() {
    return kOperatorTexts;
}

}  // namespace kalvex::differential
