#include "workbench/qt/TrayIcon.h"

#include <utility>

#include "workbench/qt/Icons.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr int kLongestTip = 64;
constexpr const char* kOpenLog = platform::Translatable("Pokaż rejestrację");

}  // namespace

TrayIcon::TrayIcon(const platform::Translator& translator, TrayCalls calls)
    : m_translator(translator), m_calls(std::move(calls)), m_balloon(m_calls.openBalloon) {
    const auto add = [this](const char* text, const std::function<void()>& call) {
        QObject::connect(m_menu.addAction(Translated(m_translator, text)), &QAction::triggered,
                         &m_menu, [call] { call(); });
    };
    add(platform::Translatable("&Przywróć"), m_calls.restore);
    add(platform::Translatable("&Minimalizuj"), m_calls.minimise);
    add(platform::Translatable("Za&kończ"), m_calls.quit);
}

void TrayIcon::Make() {
    m_icon = std::make_unique<QSystemTrayIcon>(ProgramIcon(m_error));
    m_icon->setContextMenu(&m_menu);
    m_icon->setToolTip(m_tip);
    QObject::connect(m_icon.get(), &QSystemTrayIcon::activated, &m_menu,
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason != QSystemTrayIcon::Context) m_calls.activate();
                     });
}

bool TrayIcon::SetShown(bool shown) {
    if (!shown) {
        m_icon.reset();
        return true;
    }
    if (!IsPossible()) return false;
    if (!m_icon) Make();
    m_icon->show();
    return true;
}

void TrayIcon::SetTip(const QString& tip) {
    m_tip = tip.left(kLongestTip);
    if (m_icon) m_icon->setToolTip(m_tip);
}

void TrayIcon::SetError(bool error, const QString& title, const QString& text) {
    m_error = error;
    if (m_icon) m_icon->setIcon(ProgramIcon(error));
    if (error) {
        m_balloon.Show(title, text, Translated(m_translator, kOpenLog));
    } else {
        m_balloon.Close();
    }
}

}  // namespace kalvex::window
