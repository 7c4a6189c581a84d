// The window of the application log: its last lines with a picture for the level of each. Main
// thread.
#pragma once

#include <QFont>
#include <QListView>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <string>
#include <string_view>

#include "app/Log.h"
#include "workbench/qt/LogLines.h"

namespace kalvex::window {

// The widget is the listener of the log as long as it lives.
class CKalvexLogView final : public QWidget, private app::LogListener {
  public:
    // Takes a line of the log (engine text) and how many are selected.
    using OpenLine = std::function<void(const std::string& line, std::size_t selectedRows)>;

    // A double click on a line, or Enter, calls `openLine`. The log outlives the window.
    CKalvexLogView(app::CLog& log, OpenLine openLine, QWidget* parent = nullptr);
    ~CKalvexLogView() override;

    // The newest line stays in sight; on by default.
    void SetAutoScroll(bool on);
    bool IsAutoScroll() const { return m_autoScroll; }

    void Clear() { m_log.OnClear(); }

    bool HasSelection() const;
    void Copy() const;
    void SelectAll();

    // The font, and as a text that is kept: an engine text, empty for the window's own.
    void SetLogFont(const QFont& font);
    QFont GetLogFont() const;
    std::string GetFontText() const;
    void SetFontText(std::string_view text);

  private:
    void OnLogMessage(const app::LogMessage& message) override;
    void OnLogCleared() override;
    void Follow();
    void OpenSelected() const;

    app::CLog& m_log;
    const OpenLine m_openLine;
    LogLines m_lines;
    QListView* m_list;
    QTimer m_timer;  // runs while lines have come that are not shown
    bool m_autoScroll = true;
};

}  // namespace kalvex::window
