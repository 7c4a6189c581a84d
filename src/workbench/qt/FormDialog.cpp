#include "workbench/qt/FormDialog.h"

#include <QVBoxLayout>

namespace kalvex::window {

FormDialog::FormDialog(const QString& title, QWidget* parent)
    : QDialog(parent),
      m_fields(new QFormLayout),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)) {
    setWindowTitle(title);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(m_fields);
    layout->addWidget(m_buttons);
    Ok().setDefault(true);
    connect(m_buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(m_buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });
}

void FormDialog::AddContent(QWidget* widget, int stretch) {
    auto* box = static_cast<QVBoxLayout*>(layout());
    box->insertWidget(box->count() - 1, widget, stretch);
}

}  // namespace kalvex::window
