// Active calls and wait records, owned by the document that runs them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kalvex::engine {

class RewrittenLines;

struct CCallArg {
    std::string strActual;  // the argument's text at the call, blanks removed
    std::string strFormal;  // the parameter's name; empty if the head has fewer parameters
};

struct CCallFrame {
    int nReturnLine = 0;  // the line of the CALL
    std::vector<CCallArg> arrArgs;
    RewrittenLines* lines = nullptr;  // as these arguments rewrite them; null where none are kept
};

// The times of one WAITFOR line on one calendar day.
struct CWaitFor {
    int nLine = 0;
    std::int64_t nNext = -1;  // index of the next time; -1 until placed
    int nDay = -1;
    int nMonth = -1;
    int nYear = -1;
    std::vector<std::int64_t> arrTimes;  // ascending, equal times kept
};

}  // namespace kalvex::engine
