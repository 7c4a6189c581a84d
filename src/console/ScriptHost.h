// The scripts of the process in which an end of the remote console stands. Main thread; engine
// texts.
#pragma once

#include <string_view>
#include <vector>

#include "engine/ScriptDocument.h"
#include "workbench/model/DocumentModel.h"

namespace kalvex::console {

class ScriptHost {
  public:
    virtual ~ScriptHost() = default;

    // By the name that the other end knows, and by full path; null when it is not open.
    virtual engine::CKalvexDoc* FindScript(std::string_view path) = 0;
    // Opens the file that is not open yet; null, without a word, when it does not open.
    virtual engine::CKalvexDoc* OpenScript(std::string_view path) = 0;
    // Asks nothing, and tells the other end nothing.
    virtual void CloseScript(engine::CKalvexDoc& document) = 0;
    // In the order of their opening.
    virtual std::vector<engine::CKalvexDoc*> Scripts() = 0;
    virtual workbench::DocumentModel& ModelOf(const engine::CKalvexDoc& document) = 0;
};

}  // namespace kalvex::console
