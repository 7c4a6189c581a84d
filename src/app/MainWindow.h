// The window of a process that has one. Main thread; engine texts.
#pragma once

#include <string_view>

#include "app/ScriptDocuments.h"
#include "engine/ScriptDocument.h"
#include "platform/Questions.h"

namespace kalvex::app {

class MainWindow : public platform::Questions, public DocumentsListener {
  public:
    // ---- dialogs: each returns when the person at the keyboard has answered
    virtual void ShowMessage(std::string_view text) = 0;
    // The list of the command line's options; true when the process is to end.
    virtual bool ShowCmdLineParamsDlg(std::string_view help) = 0;
    // Logs a user in; false when nobody was.
    virtual bool Login() = 0;
    // Saves what has been changed; false when the person wants to go on instead.
    virtual bool SaveModified() = 0;

    // ---- the frame
    virtual void SetTitle(std::string_view title) = 0;
    virtual void Show() = 0;
    virtual void Hide() = 0;
    virtual void SetStatusLine(std::string_view text) = 0;
    virtual void EnableCloseEntry(bool enabled) = 0;
    // The icon in the task bar, and what its balloon says; both texts are empty without an error.
    virtual void ModifyTrayIcon(bool error, std::string_view title, std::string_view text) = 0;
    virtual void UpdateToolBar() = 0;

    // ---- the frames of documents
    virtual void MinimiseFrame(engine::CKalvexDoc& document) = 0;
    virtual void RefreshVariables(engine::CKalvexDoc& document) = 0;
};

}  // namespace kalvex::app
