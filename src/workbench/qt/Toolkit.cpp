#include "workbench/qt/Toolkit.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <clocale>

#include "workbench/qt/Icons.h"

namespace kalvex::window {

namespace {

constexpr const char* kCancel = platform::Translatable("Anuluj");

}  // namespace

void PrepareToolkit(const platform::Translator& translator) {
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QStringLiteral("kalvex"));
    QApplication::setApplicationDisplayName(QString());
    QApplication::setDesktopFileName(QStringLiteral("kalvex"));
    QApplication::setWindowIcon(ProgramIcon(false));
    QApplication::setQuitOnLastWindowClosed(false);
    if (translator.Translate(kCancel) != kCancel) {
        QLocale::setDefault(QLocale(QLocale::English));
        return;
    }
    QLocale::setDefault(QLocale(QLocale::Polish));
    static QTranslator words;
    if (words.load(QStringLiteral("qtbase_pl"),
                   QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QApplication::installTranslator(&words);
    }
}

}  // namespace kalvex::window
