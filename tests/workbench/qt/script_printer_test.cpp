// A script on paper.
#include "workbench/qt/ScriptPrinter.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QPainter>

#include "workbench/qt/editor_world.h"

namespace kalvex::window {
namespace {

class ScriptPrinterTest : public EditorWorld {
  protected:
    // How many pages the file has that is printed.
    int Print(ScriptPrinter& printer) {
        const QString path = QString::fromStdString(folder.Path()) + "/out.pdf";
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path);
        EXPECT_TRUE(printer.Print(*m_editor));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray pdf = file.readAll();
        return static_cast<int>(pdf.count("/Type /Page\n") + pdf.count("/Type /Page "));
    }
    static std::string Lines(int count) {
        std::string text;
        for (int line = 0; line < count; ++line) text += "LOCAL A" + std::to_string(line) + "\n";
        return text;
    }
};

TEST_F(ScriptPrinterTest, BandsAreAboveAndBelow) {
    ScriptPrinter printer("/skrypty/pompa.kx", translator);
    QImage page(800, 1000, QImage::Format_RGB32);
    page.fill(Qt::white);
    QPainter painter(&page);
    QRect area(0, 0, 800, 1000);
    printer.formatPage(painter, false, area, 1);
    const int band = 200 * printer.logicalDpiY() / 600;
    EXPECT_GE(area.top(), band);
    EXPECT_LE(area.bottom(), 1000 - band);
    EXPECT_GT(area.height(), 1000 - 3 * band);
    EXPECT_EQ(page.pixelColor(400, 1), QColor(Qt::white));
    area = QRect(0, 0, 800, 1000);
    printer.formatPage(painter, true, area, 1);
    EXPECT_EQ(page.pixelColor(790, 1), QColor(0xF5, 0xF5, 0xF5));
    EXPECT_EQ(page.pixelColor(790, band - 1), QColor(0xF5, 0xF5, 0xF5));
    EXPECT_EQ(page.pixelColor(790, band + 1), QColor(Qt::white));
    EXPECT_EQ(page.pixelColor(3, 998), QColor(0xF5, 0xF5, 0xF5));
    EXPECT_EQ(page.pixelColor(3, 999 - band), QColor(Qt::white));
}

TEST_F(ScriptPrinterTest, LongScriptTakesPagesAndARangeTakesSome) {
    Edit(Lines(400));
    ScriptPrinter all("a.kx", translator);
    const int pages = Print(all);
    EXPECT_GT(pages, 3);
    ScriptPrinter some("a.kx", translator);
    some.setFromTo(2, 3);
    EXPECT_EQ(Print(some), 2);
}

TEST_F(ScriptPrinterTest, SchemeOfTheEditorComesBack) {
    Edit(Lines(3));
    m_editor->SetScheme(true);
    ScriptPrinter printer("a.kx", translator);
    EXPECT_EQ(Print(printer), 1);
    EXPECT_TRUE(m_editor->IsDark());
}

}  // namespace
}  // namespace kalvex::window
