// "Terminy": when a line of the script lets it go on. Main thread.
#pragma once

#include <QDialog>
#include <QString>

#include "platform/Translator.h"
#include "workbench/model/ScheduleProof.h"

class QTableWidget;

namespace kalvex::window {

class ScheduleDialog final : public QDialog {
  public:
    // `line` is an engine text. The translator is only used here.
    ScheduleDialog(const workbench::ScheduleProof& proof, const std::string& line,
                   const platform::Translator& translator, QWidget* parent = nullptr);

    // All of it as lines of text, fields parted by tabs.
    QString AsText() const { return m_text; }

  private:
    QTableWidget* MakeTable(const workbench::ScheduleProof& proof,
                            const platform::Translator& translator);

    QString m_text;
};

}  // namespace kalvex::window
