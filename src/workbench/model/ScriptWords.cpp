#include "workbench/model/ScriptWords.h"

namespace kalvex::workbench {

namespace {

// In the order of the list that a person sees, which is not quite the alphabet's.
constexpr std::string_view kKeywords[] = {
    "ADD",
    "ADD_STATUS",
    "ALARM",
    "ALARM_MEM",
    "ARCCOS",
    "ARCCTG",
    "ARCH",
    "ARCSIN",
    "ARCTG",
    "BEGIN",
    "CALC_IN_LIST",
    "CALCULATE_ERROR",
    "CALL",
    "CHECK_EXEC_ACTIVITY",
    "CHECK_EVENT_TIME",
    "CLOSE_EXEC",
    "CONFIRMED_ALARM",
    "COPY",
    "COS",
    "CREATE_VAR_LIST",
    "CTG",
    "DISABLE_NOTIFY",
    "DREP",
    "ELSE",
    "ENABLE_NOTIFY",
    "END",
    "ENDIF",
    "EXEC",
    "FACTORIAL",
    "FILL_IN_LIST",
    "FORMATED_TIMESTAMP",
    "FROM",
    "FTP_INIT",
    "FTP_RESULT",
    "GET",
    "GET_EXIT_CODE_EXEC",
    "GETDATA",
    "GOTO",
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
    "INT",
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
    "REP_INITED",
    "REP_LOADED",
    "REPORT_INITED",
    "REPORT_LOADED",
    "ROUND",
    "SET",
    "SETTIME",
    "SLEEP",
    "SUBSCRIBE",
    "SET_BY_DEVICE",
    "SET_BY_USER",
    "SET_FILE",
    "SET_STATUS",
    "SETPTR",
    "SIN",
    "SOFTLOCK",
    "SPLIT",
    "SQR",
    "SQRT",
    "SREP",
    "START",
    "STATUS",
    "STOP",
    "STRING_APPEND",
    "STRING_COMPARE",
    "STRING_COMPARE_NO_CASE",
    "STRING_FIND_ONE_OF",
    "STRING_FIND",
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
    "SUPERVISORY",
    "SORVANE_USER_NAME",
    "SORVANE_USER_DESCRIPTION",
    "TERMINATE_EXEC",
    "TG",
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
};

constexpr std::string_view kFunctions[] = {
    "ARCCOS", "ARCCTG", "ARCSIN", "ARCTG", "COS",  "CTG", "FACTORIAL",
    "INT",    "ROUND",  "SIN",    "SQR",   "SQRT", "TG",
};

constexpr std::string_view kMembers[] = {
    "AVERAGE", "BASENAME", "CHECKPOS", "COUNT",  "DESCRIPTION", "DESCNAME",  "DISPFORMAT",
    "ISARCH",  "ISHREP",   "ISDREP",   "ISMREP", "ISSREP",      "MAXIMUM",   "MAXVAL",
    "MINIMUM", "MINVAL",   "NAME",     "POS",    "SUM",         "TIMESTAMP", "UNIT",
};

// TIME.YEAR is missing among what is offered, though the language has it.
constexpr std::string_view kTimeMembers[] = {
    "DAY",          "DAYOFWEEK",     "FIRSTGMTDAY",    "FIRSTGMTHOUR",    "FIRSTGMTMONTH",
    "FIRSTGMTYEAR", "FIRSTLOCALDAY", "FIRSTLOCALHOUR", "FIRSTLOCALMONTH", "FIRSTLOCALYEAR",
    "GMTDAY",       "GMTHOUR",       "GMTMIN",         "GMTMONTH",        "GMTYEAR",
    "GMTTOLOCAL",   "HOUR",          "LASTGMTDAY",     "LASTGMTHOUR",     "LASTGMTMONTH",
    "LASTGMTYEAR",  "LASTLOCALDAY",  "LASTLOCALHOUR",  "LASTLOCALMONTH",  "LASTLOCALYEAR",
    "LOCALDAY",     "LOCALHOUR",     "LOCALMONTH",     "LOCALYEAR",       "LOCALTOGMT",
    "MIN",          "MONTH",         "NEXTDAY",        "NEXTGMTDAY",      "NEXTGMTMONTH",
    "NEXTGMTYEAR",  "NEXTLOCALDAY",  "NEXTLOCALMONTH", "PREVDAY",         "PREVGMTDAY",
    "PREVGMTMONTH", "PREVGMTYEAR",   "PREVLOCALDAY",   "PREVLOCALMONTH",  "SEC",
    "WINTERDAY",    "WINTERHOUR",    "WINTERMONTH",    "WINTERYEAR",
};

constexpr std::string_view kRemoteMembers[] = {
    "ARCH",   "CURDATA", "DESCRIPTION", "DESCNAME",  "DISPFORMAT", "DREP",   "HREP",
    "ISARCH", "ISDREP",  "ISHREP",      "ISMREP",    "ISSREP",     "MAXVAL", "MINVAL",
    "MREP",   "NAME",    "SREP",        "TIMESTAMP", "UNIT",
};

constexpr std::string_view kListMembers[] = {
    "AVERAGE", "CHECKPOS", "COUNT", "MAXIMUM", "MINIMUM", "POS", "SUM",
};

constexpr std::string_view kPointerMembers[] = {"BASENAME"};

}  // namespace

Words KeywordWords() {
    return kKeywords;
}

Words FunctionWords() {
    return kFunctions;
}

Words MemberWords() {
    return kMembers;
}

Words TimeMembers() {
    return kTimeMembers;
}

Words RemoteMembers() {
    return kRemoteMembers;
}

Words ListMembers() {
    return kListMembers;
}

Words PointerMembers() {
    return kPointerMembers;
}

}  // namespace kalvex::workbench
