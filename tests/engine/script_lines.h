// A script run line by line, without ticks and without a file: what a single statement does and
// leaves behind. Local time is Warsaw's.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/script_world.h"
#include "support/zone_scope.h"

namespace kalvex::engine {

// The instant of a reading in a zone that is `hours` ahead of GMT.
std::int64_t At(const char* reading, int hours);

class ScriptLines : public support::ScriptWorld {
  protected:
    ScriptLines();

    // Takes the lines as the script's text, to be run from the first one. Run state stays.
    void Load(const std::vector<std::string>& lines);
    // Runs lines up to the end, or to one that fails or waits; false for a failure.
    bool GoOn();
    bool RunLines(const std::vector<std::string>& lines);
    // Forgets variables, calls and waits.
    void Forget() { document.ClearRunState(); }

    bool Finished() const { return document.State().m_nCurrentLine == document.GetLineCount(); }
    // The line where the script stands (from 1) with the standing error: "2: 3 Q".
    std::string Failure() const;

    operands::CVariable& Variable(const char* name) {
        return *document.Variables().Find(text::FromUtf8(name));
    }
    operands::CVariableList& List(const char* name) {
        return static_cast<operands::CVariableList&>(Variable(name));
    }
    support::HandRemote& Remote(const char* name) {
        return static_cast<support::HandRemote&>(Variable(name));
    }
    std::vector<std::string> Elements(const char* name);

    support::ZoneScope zone{"Europe/Warsaw"};
    CKalvexDoc& document;
};

}  // namespace kalvex::engine
