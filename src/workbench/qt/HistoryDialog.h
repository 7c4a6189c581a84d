// "Historia": the versions of a script as they were saved, beside its present text. Main thread.
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/SnapshotStore.h"

class QLabel;
class QListWidget;
class QPushButton;
class QTableView;

namespace kalvex::window {

class DifferenceRows;

class HistoryDialog final : public QDialog {
  public:
    struct World {
        const platform::Translator& translator;                // outlives the dialog
        std::function<void(const std::string& text)> restore;  // the editor's text as one action
        std::function<void(const std::string& message)> tell;  // a box; an engine text
    };

    // Texts are those of the file, in Windows-1250. Versions come newest first.
    HistoryDialog(World world, std::vector<workbench::Snapshot> versions, std::string present,
                  QWidget* parent = nullptr);

    // To the next (1) or the previous (-1) place that differs; stays at the last one.
    void GoToDifference(int direction);

  private:
    void FillVersions();
    QTableView* MakeTable();
    QWidget* MakeRight();
    void Connect();
    void ShowVersion(int row);
    void Restore();

    World m_world;
    std::vector<workbench::Snapshot> m_versions;
    std::string m_present;
    std::string m_chosen;  // the text of the version that is shown
    DifferenceRows* m_rows;
    QListWidget* m_list;
    QTableView* m_table;
    QLabel* m_count;
    QPushButton* m_next;
    QPushButton* m_previous;
    QPushButton* m_restore;
};

}  // namespace kalvex::window
