#include "workbench/qt/ValueDialog.h"

#include <QFontMetrics>
#include <QLineEdit>
#include <utility>

#include "value/ValueText.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr int kFieldCharacters = 40;

constexpr const char* kTitle = platform::Translatable("Zmiana wartości zmiennej");
constexpr const char* kName = platform::Translatable("&Zmienna :");
constexpr const char* kCurrent = platform::Translatable("&Bieżąca wartość");
constexpr const char* kNew = platform::Translatable("&Nowa wartość");

QLineEdit* ReadOnlyField(const QString& text) {
    auto* const field = new QLineEdit(text);
    field->setReadOnly(true);
    field->setCursorPosition(0);
    return field;
}

}  // namespace

CVariableDlg::CVariableDlg(const platform::Translator& translator, std::string_view name,
                           value::CVal value, std::function<void(const value::CVal&)> accepted,
                           QWidget* parent)
    : FormDialog(Translated(translator, kTitle), parent),
      m_value(std::move(value)),
      m_accepted(std::move(accepted)),
      m_text(new QLineEdit) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName("valueDialog");
    const QString text = ToQt(value::OperatorText(m_value));
    AddField(Fields(), Translated(translator, kName), *ReadOnlyField(ToQt(name)));
    AddField(Fields(), Translated(translator, kCurrent), *ReadOnlyField(text));
    AddField(Fields(), Translated(translator, kNew), *m_text);
    m_text->setMinimumWidth(fontMetrics().averageCharWidth() * kFieldCharacters);
    m_text->setText(text);
    m_text->selectAll();
    m_text->setFocus();
}

void CVariableDlg::accept() {
    value::ApplyOperatorText(m_value, FromQt(m_text->text()));
    QDialog::accept();
    m_accepted(m_value);
}

}  // namespace kalvex::window
