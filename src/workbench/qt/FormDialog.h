// A dialog of fields below each other: the first has the focus, Enter is OK, Escape is Anuluj. Main
// thread.
#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QString>

#include "workbench/qt/LabelledField.h"

namespace kalvex::window {

class FormDialog : public QDialog {
  protected:
    FormDialog(const QString& title, QWidget* parent);

    QFormLayout& Fields() { return *m_fields; }
    // Below the fields; what is over of the height goes by the stretches.
    void AddContent(QWidget* widget, int stretch = 1);
    QPushButton& Ok() { return *m_buttons->button(QDialogButtonBox::Ok); }

  private:
    QFormLayout* m_fields;
    QDialogButtonBox* m_buttons;
};

}  // namespace kalvex::window
