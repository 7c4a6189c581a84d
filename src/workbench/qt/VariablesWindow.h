// The content of a variables window: the table, with its dialogs. Its frame, which has the title,
// is its owner's. Main thread.
#pragma once

#include <QApplication>
#include <QTableView>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <vector>

#include "platform/Translator.h"
#include "text/PatternMatch.h"
#include "workbench/model/FindRequest.h"
#include "workbench/qt/PatternFindDialog.h"
#include "workbench/qt/VariablesModel.h"
#include "workbench/qt/VariablesSource.h"

namespace kalvex::window {

class CVariablesView final : public QWidget {
  public:
    // The translator outlives the window.
    struct Parts {
        const platform::Translator& translator;
        VariablesSource source;
        std::vector<unsigned int> widths;  // of the columns, from the first; others stay as usual
        // Takes the widths of all columns when the window closes.
        std::function<void(const std::vector<unsigned int>& widths)> keepWidths;
        std::function<void()> beep = QApplication::beep;
    };

    explicit CVariablesView(Parts parts, QWidget* parent = nullptr);

    // At once; and once when the events at hand have been dealt with, however often it is called.
    void Refresh();
    void RefreshSoon() { m_refreshTimer.start(); }

    // Asks what to find; finds the next, and asks when nothing was looked for before.
    void Find();
    void FindNext();

    std::vector<unsigned int> GetWidths() const;
    void SetTableFont(const QFont& font);
    QFont GetTableFont() const { return m_table->font(); }

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    class TableView;

    bool OnShortcut(const QKeyEvent& event);
    bool OnKey(const QKeyEvent& event);
    void Search();
    void AskForRow(int row);
    void ChangeValue(int row);
    int GetSelectedRow() const;

    const Parts m_parts;
    VariablesModel m_model;
    QTableView* const m_table;
    QTimer m_refreshTimer;
    workbench::FindRequest m_search{{},
                                    text::PatternOption::Wildcards | text::PatternOption::Anywhere};
};

}  // namespace kalvex::window
