// What an operator does in the course of a run, read from a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "programs/kalvex-run/RunScript.h"

namespace kalvex::run {

struct Action;

// One kind of action.
struct ActionRow {
    std::string_view name;
    bool takesLine;   // fields that it needs beside those of every action
    bool takesValue;  // variable and text
    // What keeps it from being carried out, for people; empty when it has been.
    std::string (*perform)(RunScript&, const Action&);
};

struct Action {
    std::int64_t atTick = 0;  // it happens before the tick of this number, which counts from 1
    std::size_t script = 0;   // index on the command line
    const ActionRow* row = nullptr;
    int line = 0;
    std::string variable;  // engine texts (Windows-1250)
    std::string text;
};

// False with the file, the line and what is wrong in `fault`. `scriptCount` is that of the command
// line.
bool ReadActions(const std::string& path, std::size_t scriptCount, std::vector<Action>& actions,
                 std::string& fault);

}  // namespace kalvex::run
