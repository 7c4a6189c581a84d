#include "workbench/qt/LineDialog.h"

#include <QRegularExpressionValidator>

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kNumber = platform::Translatable("&Numer");

}  // namespace

CLineDlg::CLineDlg(const QString& title, const platform::Translator& translator, int number,
                   QWidget* parent)
    : FormDialog(title, parent), m_field(new QLineEdit(QString::number(number), this)) {
    // Nine digits always fit into a number.
    static const QRegularExpression digits(QStringLiteral("[0-9]{1,9}"));
    m_field->setObjectName(QStringLiteral("lineNumber"));
    m_field->setValidator(new QRegularExpressionValidator(digits, m_field));
    AddField(Fields(), Translated(translator, kNumber), *m_field);
    connect(m_field, &QLineEdit::textChanged, this,
            [this] { Ok().setEnabled(GetNumber().has_value()); });
    m_field->selectAll();
    m_field->setFocus();
}

std::optional<int> CLineDlg::GetNumber() const {
    bool given = false;
    const int number = m_field->text().toInt(&given);
    return given ? std::optional(number) : std::nullopt;
}

std::optional<int> CLineDlg::Ask(const QString& title, const platform::Translator& translator,
                                 int number, QWidget* parent) {
    CLineDlg dialog(title, translator, number, parent);
    if (dialog.exec() != Accepted) return std::nullopt;
    return dialog.GetNumber();
}

}  // namespace kalvex::window
