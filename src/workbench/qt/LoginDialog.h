// Asks who is at the keyboard. Main thread.
#pragma once

#include <QLineEdit>
#include <functional>
#include <string>

#include "app/MainWindow.h"
#include "platform/Translator.h"
#include "workbench/qt/FormDialog.h"

namespace kalvex::window {

class LoginDialog final : public FormDialog {
  public:
    // Whether the user with that password has been logged in; engine texts.
    using LogIn = std::function<bool(const std::string& name, const std::string& password)>;

    // A login that is refused is told in a box, and the dialog stays. Window and translator outlive
    // the dialog.
    LoginDialog(LogIn logIn, app::MainWindow& window, const platform::Translator& translator,
                QWidget* parent = nullptr);

    void accept() override;

  private:
    const LogIn m_logIn;
    app::MainWindow& m_window;
    const platform::Translator& m_translator;
    QLineEdit* m_user;
    QLineEdit* m_password;
};

}  // namespace kalvex::window
