// The main window with its application, in a folder of its own. Time stands still unless a test
// lets it go on, and boxes are answered as the test has said beforehand. Texts are UTF-8.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <QtTest/QTest>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/app_fakes.h"
#include "platform/IniProfile.h"
#include "platform/UserSession.h"
#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "workbench/qt/KalvexWindow.h"
#include "workbench/qt/shown_dialog.h"

namespace kalvex::window {

class WindowTest : public testing::Test {
  protected:
    WindowTest();
    ~WindowTest() override;

    // ---- the process
    void PutScript(const std::string& name, const std::string& text) const {
        m_folder.Put(name, text::FromUtf8(text));
    }
    // Begins the process, as a user of the highest level if nothing else has been said, and lets
    // the window be shown.
    bool Start(std::vector<std::string> arguments = {});
    // Ends it without any question, as a lost process does: what is in its folder stays.
    void End();
    app::CKalvexApp& App() { return *m_app; }
    KalvexWindow& Window() { return *m_window; }
    // Time goes on, a tick a millisecond.
    void Tick(int count = 1);

    // ---- scripts
    // The script is opened by its path in the folder, as the person does it.
    engine::CKalvexDoc& Open(const std::string& name);
    engine::CKalvexDoc& New();
    engine::CKalvexDoc* Find(const std::string& name);
    CKalvexEditCtrl& EditorOf(const engine::CKalvexDoc& document);
    CKalvexEditCtrl* ShownEditorOf(const engine::CKalvexDoc& document);
    QMdiSubWindow& FrameOf(const engine::CKalvexDoc& document);
    // Types at the caret.
    void Type(const engine::CKalvexDoc& document, const QString& text);
    // The name without the mark of a modified script.
    std::string TitleOf(const engine::CKalvexDoc& document);
    std::size_t Count() { return App().Documents().All().size(); }

    // ---- what the person does
    void Run(workbench::Command command) { Window().Run(command); }
    bool CanRun(workbench::Command command);
    QAction& ActionOf(workbench::Command command);
    // The next boxes are answered by these buttons, in this order; a box with none left is left by
    // Escape.
    void Answer(std::vector<QMessageBox::StandardButton> buttons);
    // The next dialogs for files are answered with these names in the folder; none: refused.
    void Choose(std::vector<std::string> names);
    // Done while the next box is open, before it is answered.
    void WhileAsked(std::function<void()> work) { m_whileAsked = std::move(work); }
    // Done with the next dialog that is neither; it has to end it.
    void WithDialog(std::function<void(QDialog&)> work) { m_works.push_back(std::move(work)); }
    bool Until(const std::function<bool()>& condition) { return QTest::qWaitFor(condition); }
    // Everything that has been posted is done.
    void Settle();
    // The texts of the boxes so far, with their buttons; they are forgotten.
    std::vector<std::string> Boxes() { return std::exchange(m_boxes, {}); }
    std::string StatusOf(const char* label);
    // The log's lines without their stamps.
    std::vector<std::string> LogLines();

    static constexpr std::int64_t kNow = 1710050400;  // 2024-03-10 07:00:00 in Warsaw

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    bool m_isTrusted = true;
    platform::VirtualClock m_clock{kNow};
    platform::Translator m_translator;

  private:
    void AnswerDialog();
    void AnswerBox(QMessageBox& box);
    void AnswerFiles(QDialog& dialog);

    std::int64_t m_microseconds = 0;
    app::Record m_record;
    platform::IniProfile m_profile;
    platform::CCrypt m_crypt{m_folder.Path("Kalvex.key"), platform::KeyFile::ReadOnly};
    platform::UserStore m_userStore{platform::PasswordCost::Least};
    std::optional<platform::UserSession> m_users;
    std::optional<app::FakeInstances> m_instances;
    std::optional<app::FakeVantrel> m_vantrel;
    std::unique_ptr<QtLoop> m_loop;
    std::unique_ptr<KalvexWindow> m_window;
    std::unique_ptr<app::CKalvexApp> m_app;
    QTimer m_answering;
    std::deque<QMessageBox::StandardButton> m_buttons;
    std::deque<std::string> m_names;
    QPointer<QDialog> m_namedDialog;
    std::deque<std::function<void(QDialog&)>> m_works;
    std::function<void()> m_whileAsked;
    std::vector<std::string> m_boxes;
};

}  // namespace kalvex::window
