#include "workbench/qt/SourceDialog.h"

#include <algorithm>

#include "app/Configuration.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

using platform::Translatable;

constexpr const char* kTitle = Translatable("Źródło");
constexpr const char* kName = Translatable("&Nazwa");
constexpr const char* kUser = Translatable("&Użytkownik");
constexpr const char* kPassword = Translatable("&Hasło");
constexpr const char* kPasswordKept = Translatable("bez zmian");
constexpr const char* kBadFields =
    Translatable("Nazwa źródła i użytkownik nie mogą być puste ani zawierać przecinka");
constexpr const char* kNameTaken = Translatable("Źródło o tej nazwie już istnieje");
constexpr const char* kBadCharacters = Translatable("Tekst ma znaki spoza Windows-1250");
constexpr const char* kBadPassword = Translatable("Hasło ma znaki spoza Windows-1250");

bool HasEngineForm(const QString& text) {
    return ToQt(FromQt(text)) == text;
}

}  // namespace

SourceDialog::SourceDialog(const Parts& parts, std::size_t index, QWidget* parent)
    : FormDialog(Translated(parts.translator, kTitle), parent),
      m_parts(parts),
      m_index(index),
      m_name(new QLineEdit(this)),
      m_user(new QLineEdit(this)),
      m_password(new QLineEdit(this)) {
    m_name->setObjectName(QStringLiteral("sourceName"));
    m_user->setObjectName(QStringLiteral("sourceUser"));
    m_password->setObjectName(QStringLiteral("sourcePassword"));
    m_password->setEchoMode(QLineEdit::Password);
    AddField(Fields(), Translated(parts.translator, kName), *m_name);
    AddField(Fields(), Translated(parts.translator, kUser), *m_user);
    AddField(Fields(), Translated(parts.translator, kPassword), *m_password);
    if (!IsNew()) {
        m_name->setText(ToQt(parts.sources[index].name));
        m_user->setText(ToQt(parts.sources[index].user));
        m_password->setPlaceholderText(Translated(parts.translator, kPasswordKept));
    }
    m_name->setFocus();
}

sources::CSourceDesc SourceDialog::GetSource() const {
    sources::CSourceDesc source;
    if (!IsNew()) source = m_parts.sources[m_index];
    source.name = FromQt(m_name->text());
    source.user = FromQt(m_user->text());
    if (!IsNew() && m_password->text().isEmpty()) return source;
    std::string password = FromQt(m_password->text());
    source.password = m_parts.crypt.EncryptText(password);
    source.lost = false;
    platform::CCrypt::SecureEmptyString(password);
    return source;
}

bool SourceDialog::Refuse(const char* polish, QLineEdit& field) {
    m_parts.window.ShowMessage(FromQt(Translated(m_parts.translator, polish)));
    field.setFocus();
    return false;
}

bool SourceDialog::CheckFields() {
    for (QLineEdit* field : {m_name, m_user}) {
        if (!HasEngineForm(field->text())) return Refuse(kBadCharacters, *field);
        if (!app::IsSourceField(FromQt(field->text()))) return Refuse(kBadFields, *field);
    }
    if (!HasEngineForm(m_password->text())) return Refuse(kBadPassword, *m_password);
    const auto found =
        std::ranges::find(m_parts.sources, FromQt(m_name->text()), &sources::CSourceDesc::name);
    const auto place = static_cast<std::size_t>(found - m_parts.sources.begin());
    const bool taken = found != m_parts.sources.end() && place != m_index;
    return !taken || Refuse(kNameTaken, *m_name);
}

void SourceDialog::accept() {
    if (CheckFields()) FormDialog::accept();
}

}  // namespace kalvex::window
