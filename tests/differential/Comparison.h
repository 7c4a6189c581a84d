// What is visible of two worlds, compared.
#pragma once

#include <string>

#include "differential/World.h"

namespace kalvex::differential {

class Comparison {
  public:
    Comparison(World& kept, World& read) : m_kept(kept), m_read(read) {}

    // What differs, with both values, kept forms first; empty when nothing does. `whole` compares
    // what is long too: all calls of a deep stack, and the texts.
    std::string FindDifference(bool whole);

  private:
    // Each is true when nothing differs.
    bool CompareWorlds();
    bool CompareRequests();
    bool CompareScripts(std::size_t index, bool whole);
    bool CompareState(const engine::RunState& kept, const engine::RunState& read, bool whole);
    bool CompareStanding(const engine::LineStanding& kept, const engine::LineStanding& read);
    bool CompareCalls(const engine::RunState& kept, const engine::RunState& read, bool whole);
    bool CompareWaits(const engine::RunState& kept, const engine::RunState& read);
    bool CompareVariables(engine::CKalvexDoc& kept, engine::CKalvexDoc& read);
    bool CompareVariable(operands::CVariable& kept, operands::CVariable& read);
    bool CompareLists(const operands::CVariableList& kept, const operands::CVariableList& read);
    bool CompareViews(const SeenView& kept, const SeenView& read);

    template <class Value>
    bool Same(const char* what, const Value& kept, const Value& read);

    World& m_kept;
    World& m_read;
    std::size_t m_logSeen = 0;
    std::size_t m_messagesSeen = 0;
    std::string m_context;  // of what is being compared
    std::string m_difference;
};

}  // namespace kalvex::differential
