// What the commands of kalvexctl do. Main thread.
#pragma once

#include <string_view>

#include "programs/kalvexctl/Call.h"
#include "programs/kalvexctl/ScriptSession.h"

namespace kalvex::kalvexctl {

// ---- commands, each a conversation of its own

Ending List(Call& call);
Ending Vars(Call& call);
Ending Set(Call& call);
Ending Start(Call& call);
Ending Stop(Call& call);
Ending Step(Call& call);
Ending Reset(Call& call);
Ending Break(Call& call);
Ending Unbreak(Call& call);
Ending Reload(Call& call);
Ending Take(Call& call);
Ending Release(Call& call);
Ending Open(Call& call);
Ending Close(Call& call);
Ending Log(Call& call);
Ending Level(Call& call);

// ---- and those that ask beside it

Ending Status(Call& call);
Ending Show(Call& call);
Ending Breaks(Call& call);
Ending Why(Call& call);
Ending Audit(Call& call);

// ---- what they do within a session that is held

using SessionWork = MaybeEnding (*)(Call& call, ScriptSession& session);

// By the name of the command; null when it is none for a session.
SessionWork FindSessionWork(std::string_view command);

MaybeEnding PrintVariables(Call& call, ScriptSession& session);
MaybeEnding SetVariable(Call& call, ScriptSession& session);

}  // namespace kalvex::kalvexctl
