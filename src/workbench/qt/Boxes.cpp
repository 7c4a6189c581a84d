#include "workbench/qt/Boxes.h"

#include <QFontDatabase>
#include <QMessageBox>
#include <algorithm>
#include <iterator>

namespace kalvex::window {

namespace {

struct BoxRow {
    BoxKind kind;
    QMessageBox::Icon icon;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton first;
    QMessageBox::StandardButton escape;
};

const BoxRow kBoxes[] = {
    {BoxKind::Message, QMessageBox::Information, QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Ok},
    {BoxKind::Table, QMessageBox::NoIcon, QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Ok},
    {BoxKind::YesNo, QMessageBox::Question, QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes,
     QMessageBox::No},
    {BoxKind::YesNoCancel, QMessageBox::Question,
     QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Yes,
     QMessageBox::Cancel},
};

}  // namespace

BoxAnswer ShowBox(QWidget* parent, BoxKind kind, const QString& text) {
    const BoxRow& row = *std::ranges::find(kBoxes, kind, &BoxRow::kind);
    QMessageBox box(row.icon, QStringLiteral("Kalvex"), text, row.buttons, parent);
    box.setObjectName(QStringLiteral("messageBox"));
    box.setTextFormat(Qt::PlainText);
    if (kind == BoxKind::Table) {
        box.setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    }
    box.setDefaultButton(row.first);
    box.setEscapeButton(row.escape);
    box.exec();
    switch (box.standardButton(box.clickedButton())) {
        case QMessageBox::No:
            return BoxAnswer::No;
        case QMessageBox::Cancel:
            return BoxAnswer::Cancel;
        default:
            return BoxAnswer::Yes;
    }
}

}  // namespace kalvex::window
