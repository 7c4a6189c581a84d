#include "workbench/qt/ScriptPrinter.h"

#include <QFontMetrics>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <algorithm>

#include "text/TextFormat.h"
#include "workbench/qt/ScriptEditor.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kPage = platform::Translatable("Strona %d");
constexpr QRgb kBand = 0xF5F5F5;
constexpr QRgb kInk = 0x000000;
constexpr int kBandHeight = 200;  // units
constexpr int kUnitsPerInch = 600;
constexpr int kBandText = 3;  // a text has one of so many parts of its band
constexpr int kBandGap = 4;   // and stands so many of its own height's parts from the edge

// The scheme of the editor while it lives.
class LightScheme {
  public:
    explicit LightScheme(CKalvexEditCtrl& editor) : m_editor(editor), m_dark(editor.IsDark()) {
        m_editor.SetScheme(false);
    }
    ~LightScheme() { m_editor.SetScheme(m_dark); }
    LightScheme(const LightScheme&) = delete;
    LightScheme& operator=(const LightScheme&) = delete;

  private:
    CKalvexEditCtrl& m_editor;
    bool m_dark;
};

void DrawBand(QPainter& painter, const QRect& band, const QString& text, Qt::Alignment side) {
    painter.save();
    painter.fillRect(band, QColor(kBand));
    QFont font = painter.font();
    font.setPixelSize(std::max(band.height() / kBandText, 1));
    painter.setFont(font);
    painter.setPen(QColor(kInk));
    const int gap = band.height() / kBandGap;
    const QRect inner = band.adjusted(gap, 0, -gap, 0);
    const QString fitting =
        QFontMetrics(font, painter.device()).elidedText(text, Qt::ElideMiddle, inner.width());
    painter.drawText(inner, Qt::AlignVCenter | side, fitting);
    painter.restore();
}

}  // namespace

ScriptPrinter::ScriptPrinter(const QString& path, const platform::Translator& translator)
    : m_path(path), m_translator(translator) {
    setDocName(path);
    setWrapMode(QsciScintilla::WrapWord);
}

void ScriptPrinter::formatPage(QPainter& painter, bool drawing, QRect& area, int page) {
    const int height = kBandHeight * logicalDpiY() / kUnitsPerInch;
    const QRect above(area.left(), area.top(), area.width(), height);
    const QRect below(area.left(), area.bottom() + 1 - height, area.width(), height);
    area.setTop(above.bottom() + 1 + height / kBandGap);
    area.setBottom(below.top() - 1 - height / kBandGap);
    if (!drawing) return;
    DrawBand(painter, above, m_path, Qt::AlignLeft);
    const std::string number =
        text::FormatText(m_translator.Translate(kPage), {std::to_string(page)});
    DrawBand(painter, below, ToQt(number), Qt::AlignRight);
}

bool ScriptPrinter::Print(CKalvexEditCtrl& editor) {
    const LightScheme light(editor);
    editor.SendScintilla(QsciScintillaBase::SCI_SETPRINTCOLOURMODE,
                         static_cast<long>(QsciScintillaBase::SC_PRINT_COLOURONWHITE));
    return printRange(&editor) != 0;
}

void PrintWithDialog(CKalvexEditCtrl& editor, ScriptPrinter& printer, QWidget* window) {
    QPrintDialog dialog(&printer, window);
    dialog.setOptions(QAbstractPrintDialog::PrintPageRange | QAbstractPrintDialog::PrintToFile |
                      QAbstractPrintDialog::PrintCollateCopies);
    if (dialog.exec() == QDialog::Accepted) printer.Print(editor);
}

void ShowPrintPreview(CKalvexEditCtrl& editor, ScriptPrinter& printer, QWidget* window) {
    QPrintPreviewDialog dialog(&printer, window);
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog,
                     [&editor, &printer] { printer.Print(editor); });
    dialog.exec();
}

void ShowPageSetup(ScriptPrinter& printer, QWidget* window) {
    QPageSetupDialog(&printer, window).exec();
}

}  // namespace kalvex::window
