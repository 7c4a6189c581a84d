#include "workbench/qt/LoginDialog.h"

#include "platform/Crypt.h"
#include "text/TextFormat.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kTitle = platform::Translatable("Logowanie");
constexpr const char* kUser = platform::Translatable("&Użytkownik");
constexpr const char* kPassword = platform::Translatable("&Hasło");

}  // namespace

LoginDialog::LoginDialog(LogIn logIn, app::MainWindow& window,
                         const platform::Translator& translator, QWidget* parent)
    : FormDialog(Translated(translator, kTitle), parent),
      m_logIn(std::move(logIn)),
      m_window(window),
      m_translator(translator),
      m_user(new QLineEdit(this)),
      m_password(new QLineEdit(this)) {
    m_user->setObjectName(QStringLiteral("loginUser"));
    m_password->setObjectName(QStringLiteral("loginPassword"));
    m_password->setEchoMode(QLineEdit::Password);
    AddField(Fields(), Translated(translator, kUser), *m_user);
    AddField(Fields(), Translated(translator, kPassword), *m_password);
    m_user->setFocus();
}

void LoginDialog::accept() {
    const std::string user = FromQt(m_user->text());
    std::string password = FromQt(m_password->text());
    m_password->clear();
    const bool loggedIn = m_logIn(user, password);
    platform::CCrypt::SecureEmptyString(password);
    if (loggedIn) return FormDialog::accept();
    m_window.ShowMessage(
        text::FormatText(m_translator.Translate("Nie można zalogować użytkownika %s"), {user}));
    m_password->setFocus();
}

}  // namespace kalvex::window
