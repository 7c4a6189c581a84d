// The dialog that shows the variables of a data source and has the chosen ones declared. It stays
// open beside its script. Main thread.
#pragma once

#include <QDialog>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/SourceVariables.h"
#include "workbench/qt/SourceTreeModel.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeView;

namespace kalvex::window {

// What the dialog of a script remembers until it is opened again; engine texts.
struct InsertMemory {
    std::string source;
    std::string filter;
    std::set<std::string> openGroups;  // by their paths
    int position = -1;                 // of the tree's scroll bar; -1: nothing was inserted yet
};

// Made by new; it destroys itself when it closes.
class CInsertVarsDlg final : public QDialog {
  public:
    // All that is referred to outlives the dialog.
    struct Parts {
        const platform::Translator& translator;
        workbench::SourceVariables& variables;
        std::vector<std::string> sources;  // the names of those that are described
        InsertMemory& memory;
        std::function<void(std::string_view text)> showMessage;
        // Puts the lines, which have their line ends, one below the other before the first line.
        std::function<void(const std::vector<std::string>& lines)> insert;
    };

    CInsertVarsDlg(Parts parts, QWidget* parent);

    void accept() override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void AddWidgets();
    void Connect();
    void ChooseSource();
    void Load();
    void ShowState(const char* polish);
    void ShowVariables(const vantrel::CObjInfoList* list);
    void KeepPosition();
    void RestorePosition();
    std::string PathOf(int node) const;
    template <class Visit>
    void ForEachGroup(Visit visit) const;

    const Parts m_parts;
    SourceTreeModel m_model;
    std::string m_shownSource;  // of the tree
    int m_loads = 0;
    bool m_loading = false;
    bool m_restore;  // the next tree is shown as the last dialog left its own
    QComboBox* const m_source;
    QLineEdit* const m_filter;
    QPushButton* const m_filterButton;
    QTreeView* const m_tree;
    QLabel* const m_state;
    QPushButton* const m_insert;
};

}  // namespace kalvex::window
