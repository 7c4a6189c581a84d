// Fields of dialogs under the names by which people and assistive programs find them. Main thread.
#pragma once

#include <QFormLayout>
#include <QLabel>
#include <QString>
#include <QWidget>

namespace kalvex::window {

// The text without the mark of its mnemonic.
QString WithoutMnemonic(QString text);

// A label whose text is the field's accessible name and whose mnemonic leads there.
QLabel* LabelFor(QWidget& field, const QString& text);

// A row of the form with a label and its field.
void AddField(QFormLayout& form, const QString& label, QWidget& field);

}  // namespace kalvex::window
