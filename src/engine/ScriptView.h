// What the engine tells the view of a document, and the one thing that it asks. Main thread.
#pragma once

namespace kalvex::engine {

class ScriptView {
  public:
    virtual ~ScriptView() = default;
    virtual void SelectLine(int line) = 0;  // -1 clears the selection
    virtual void SetLineMarker(int line, bool set) = 0;
    virtual void SetReadOnly(bool readOnly) = 0;
    virtual void RefreshTitle() = 0;
    virtual void ClearAllMarkers() = 0;
    virtual void RefreshVariables() = 0;
    virtual bool HasBreakpoint(int line) const = 0;
    // One of its lines may hold a breakpoint. Where none does, lines that run in one tick are not
    // selected one by one, but the last of them.
    virtual bool HasBreakpoints() const { return true; }
};

}  // namespace kalvex::engine
