// "Dlaczego czeka": what the active script stands on, for a dock of the main window. Main thread.
#pragma once

#include <QString>
#include <QWidget>
#include <string>
#include <vector>

#include "engine/ScriptDocument.h"
#include "platform/Translator.h"

class QPlainTextEdit;

namespace kalvex::window {

class StandingPane final : public QWidget {
  public:
    // The translator is only used here.
    explicit StandingPane(const platform::Translator& translator, QWidget* parent = nullptr);

    // Engine texts, none where there is no script. Only lines that have changed are replaced, so
    // whoever reads or selects the others is not disturbed.
    void Show(const std::vector<std::string>& lines);

  private:
    std::vector<std::string> m_lines;
    QString m_noScript;
    QPlainTextEdit* m_text;
};

// The tip of a line of the script: what it waits for there. Empty for a line on which it does not
// stand, and while it runs freely or does not run.
QString StandingTip(engine::CKalvexDoc& document, int line, const platform::Translator& translator);

}  // namespace kalvex::window
