// A script on paper: page by page with the script's path above and the number of the page below,
// in the colours of the light scheme. Long lines are wrapped. Main thread.
#pragma once

#include <Qsci/qsciprinter.h>

#include <QString>

#include "platform/Translator.h"

namespace kalvex::window {

class CKalvexEditCtrl;

class ScriptPrinter final : public QsciPrinter {
  public:
    // The path stands above each page.
    ScriptPrinter(const QString& path, const platform::Translator& translator);

    // For what is printed from now on.
    void SetPath(const QString& path) { m_path = path; }
    // The pages of the printer's range; false where the printer fails.
    bool Print(CKalvexEditCtrl& editor);

    void formatPage(QPainter& painter, bool drawing, QRect& area, int page) override;

  private:
    QString m_path;
    const platform::Translator& m_translator;
};

// Each shows a dialog of the toolkit, modal to the window, beside which ticks go on; the printer
// keeps what is chosen.
void PrintWithDialog(CKalvexEditCtrl& editor, ScriptPrinter& printer, QWidget* window);
void ShowPrintPreview(CKalvexEditCtrl& editor, ScriptPrinter& printer, QWidget* window);
void ShowPageSetup(ScriptPrinter& printer, QWidget* window);

}  // namespace kalvex::window
