// State that a subsystem keeps for one script beside its variables, such as its started programs.
// The script owns it, tells it when the run state is cleared, and destroys it in the order of this
// list.
#pragma once

namespace kalvex::operands {

enum class PartId {
    ReportNotifications,
    Processes,
    LinkTests,
    ArchiveValues,
    Count,
};

class DocumentPart {
  public:
    virtual ~DocumentPart() = default;
    virtual void ClearRunState() {}
};

}  // namespace kalvex::operands
