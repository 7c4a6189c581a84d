#include "workbench/qt/LabelledField.h"

namespace kalvex::window {

QString WithoutMnemonic(QString text) {
    return text.remove('&');
}

QLabel* LabelFor(QWidget& field, const QString& text) {
    field.setAccessibleName(WithoutMnemonic(text));
    auto* const label = new QLabel(text);
    label->setBuddy(&field);
    return label;
}

void AddField(QFormLayout& form, const QString& label, QWidget& field) {
    form.addRow(LabelFor(field, label), &field);
}

}  // namespace kalvex::window
