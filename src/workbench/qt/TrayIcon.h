// The icon in the panel of the desktop: its picture tells of a script that stands on an error, its
// menu and a click bring the window back. Without a panel for icons there is none. Main thread.
#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>

#include "platform/Translator.h"
#include "workbench/qt/Balloon.h"

namespace kalvex::window {

struct TrayCalls {
    std::function<void()> activate;  // a click on the icon
    std::function<void()> restore;   // its menu
    std::function<void()> minimise;
    std::function<void()> quit;
    std::function<void()> openBalloon;  // a click on the balloon
};

class TrayIcon {
  public:
    TrayIcon(const platform::Translator& translator, TrayCalls calls);

    // Shows the icon, or takes it away. False when there is no panel for it.
    bool SetShown(bool shown);
    bool IsShown() const { return m_icon && m_icon->isVisible(); }
    static bool IsPossible() { return QSystemTrayIcon::isSystemTrayAvailable(); }

    // At most 64 characters of it are kept.
    void SetTip(const QString& tip);
    // The balloon comes up with the error, and goes with it.
    void SetError(bool error, const QString& title, const QString& text);

  private:
    void Make();

    const platform::Translator& m_translator;
    const TrayCalls m_calls;
    QMenu m_menu;
    QString m_tip;
    bool m_error = false;
    std::unique_ptr<QSystemTrayIcon> m_icon;
    Balloon m_balloon;
};

}  // namespace kalvex::window
