// Says what the person does while it lives, so that the undo list can tell. Main thread.
#pragma once

#include <optional>

#include "workbench/qt/ScriptEditor.h"

namespace kalvex::window {

class CKalvexEditCtrl::EditScope {
  public:
    enum class Grouping {
        Own,   // one undo action whatever it consists of
        Kind,  // joins the edits before only where they are of its kind
        Name,  // leaves all to the editor
    };

    EditScope(CKalvexEditCtrl& editor, unsigned code, Grouping grouping);
    ~EditScope();
    EditScope(const EditScope&) = delete;
    EditScope& operator=(const EditScope&) = delete;

  private:
    CKalvexEditCtrl& m_editor;
    std::optional<unsigned> m_outer;
    bool m_group;
};

}  // namespace kalvex::window
