// A main window that keeps what it is asked to show. Texts are UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/MainWindow.h"
#include "text/CodePage.h"

namespace kalvex::window {

class HeardWindow final : public app::MainWindow {
  public:
    bool AskYesNo(std::string_view text) override {
        messages.push_back("ask " + text::ToUtf8(text));
        return answer;
    }
    void ShowMessage(std::string_view text) override { messages.push_back(text::ToUtf8(text)); }
    bool ShowCmdLineParamsDlg(std::string_view) override { return answer; }
    bool Login() override { return answer; }
    bool SaveModified() override { return answer; }
    void SetTitle(std::string_view) override {}
    void Show() override {}
    void Hide() override {}
    void SetStatusLine(std::string_view) override {}
    void EnableCloseEntry(bool) override {}
    void ModifyTrayIcon(bool, std::string_view, std::string_view) override {}
    void UpdateToolBar() override {}
    void MinimiseFrame(engine::CKalvexDoc&) override {}
    void RefreshVariables(engine::CKalvexDoc&) override {}

    std::vector<std::string> messages;
    bool answer = true;
};

}  // namespace kalvex::window
