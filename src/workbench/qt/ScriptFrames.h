// The windows of all open scripts: a frame for each document as it comes and goes, its title, and
// what a run changes in those that are seen. Main thread.
#pragma once

#include <QMdiArea>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "app/KalvexApp.h"
#include "workbench/qt/LookSettings.h"
#include "workbench/qt/ScriptFrame.h"
#include "workbench/qt/VariablesWindow.h"

namespace kalvex::window {

// What the frames want of the window that they are in.
struct FramesCalls {
    std::function<void(engine::CKalvexDoc&)> close;
    std::function<void(engine::CKalvexDoc&, bool minimised)> minimised;
    std::function<EditorCalls(engine::CKalvexDoc&)> editorCalls;
    std::function<std::unique_ptr<CVariablesView>(engine::CKalvexDoc&)> makeVariables;
    std::function<bool(CChildFrame&)> isShown;  // its frame is, to the person
};

class ScriptFrames {
  public:
    ScriptFrames(QMdiArea& area, const platform::Translator& translator, FramesCalls calls);
    ~ScriptFrames();

    // Before the first document.
    void SetApp(app::CKalvexApp& app) { m_app = &app; }
    void SetPlaces(LookSettings& look) { m_look = &look; }

    void Add(engine::CKalvexDoc& document);
    void Remove(engine::CKalvexDoc& document);

    CChildFrame& FrameOf(const engine::CKalvexDoc& document) const;
    // The document of a frame, be it that of the script or that of its variables; null for another.
    engine::CKalvexDoc* DocumentOf(const QMdiSubWindow* frame) const;
    bool IsVariables(const QMdiSubWindow* frame) const;
    bool HasVariables(const engine::CKalvexDoc& document) const;
    CVariablesView* VariablesOf(const engine::CKalvexDoc& document) const;

    // Shows the script's frame, restored from an icon, and makes it the active one.
    void Activate(const engine::CKalvexDoc& document);
    // Opens the variables of the script, or activates them.
    void ShowVariables(engine::CKalvexDoc& document);
    void CloseVariables(const engine::CKalvexDoc& document);
    void RefreshVariables(const engine::CKalvexDoc& document);

    // What all bars have looked for.
    FindMemory& Finds() { return m_finds; }

    // The title of the document without what it does: its file's name, or that of a new script.
    QString BaseTitle(const engine::CKalvexDoc& document) const;
    void UpdateTitle(engine::CKalvexDoc& document);
    void SetLook(const EditorLook& look);
    // Whether the values of variables stand beside the lines.
    void ShowValues(bool shown);
    // Those that are seen show the present state of their documents, each in its turn.
    void ApplyNext();
    void ApplyAll();
    std::vector<CChildFrame*> All() const;

  private:
    struct Entry;

    void OnNews(engine::CKalvexDoc& document, workbench::DocumentNews news);
    void ApplySoon(engine::CKalvexDoc& document);

    QMdiArea& m_area;
    const platform::Translator& m_translator;
    const FramesCalls m_calls;
    app::CKalvexApp* m_app = nullptr;
    LookSettings* m_look = nullptr;
    EditorLook m_editorLook;
    FindMemory m_finds;
    std::map<const engine::CKalvexDoc*, std::unique_ptr<Entry>> m_entries;
    std::vector<const engine::CKalvexDoc*> m_order;  // in which they came
    std::set<engine::CKalvexDoc*> m_soon;
    QTimer m_soonTimer;
    bool m_values = true;
    std::size_t m_next = 0;
    int m_newScripts = 0;
};

}  // namespace kalvex::window
