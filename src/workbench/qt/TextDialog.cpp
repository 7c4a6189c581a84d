#include "workbench/qt/TextDialog.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "text/TextFormat.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kAbout = platform::Translatable("O programie");

constexpr int kMargin = 40;

// That of the text, as far as the screen has place.
QSize SizeFor(const QPlainTextEdit& view, const QString& text) {
    const QSize needed =
        view.fontMetrics().size(Qt::TextExpandTabs, text) + QSize(kMargin, kMargin);
    return needed.boundedTo(view.screen()->availableSize() * 2 / 3);
}

}  // namespace

TextDialog::TextDialog(const QString& title, const QString& text, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(title);
    auto* view = new QPlainTextEdit(text, this);
    view->setObjectName(QStringLiteral("text"));
    view->setAccessibleName(title);
    view->setReadOnly(true);
    view->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    view->setTabChangesFocus(true);
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    view->setMinimumSize(SizeFor(*view, text));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(view);
    layout->addWidget(buttons);
    buttons->button(QDialogButtonBox::Ok)->setFocus();
}

AboutBox::AboutBox(const QString& version, const platform::Translator& translator, QWidget* parent)
    : TextDialog(Translated(translator, kAbout),
                 ToQt(text::FormatText(
                     translator.Translate("Kalvex %s\n\nModuł skryptów systemu Sorvane SCADA: "
                                          "wykonuje skrypty, które odczytują i zmieniają zmienne "
                                          "serwerów danych."),
                     {FromQt(version)})),
                 parent) {}

}  // namespace kalvex::window
