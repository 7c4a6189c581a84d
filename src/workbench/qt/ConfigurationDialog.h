// The settings of the application, of which a person may change these: the icon, the period of the
// variables window, the rights, the scripts to start. Main thread.
#pragma once

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/Configuration.h"
#include "app/MainWindow.h"
#include "platform/Translator.h"
#include "platform/UserDirectory.h"
#include "workbench/model/AutostartList.h"
#include "workbench/qt/FormDialog.h"
#include "workbench/qt/RowTable.h"

namespace kalvex::window {

// The scripts that a person chooses, in a folder of the system to begin with; paths of the system.
QStringList AskForScripts(QWidget* parent, const QString& folder,
                          const platform::Translator& translator);

class CCfgDlg final : public FormDialog {
  public:
    // What is referred to outlives the dialog. The widgets handed over are the parents of what is
    // shown.
    struct Parts {
        app::MainWindow& window;
        const platform::Translator& translator;
        std::string workingDir;  // a path of the system
        // The people in the users' file, for the choice of a right.
        std::function<std::vector<platform::UserRecord>()> listUsers;
        std::function<std::optional<workbench::FindRequest>(QWidget*)> askWhatToFind;
        std::function<QStringList(QWidget*, const QString& folder, const platform::Translator&)>
            askForScripts = AskForScripts;
    };

    CCfgDlg(app::KalvexConfiguration configuration, Parts parts, QWidget* parent = nullptr);

    // What was given, with the changes; it counts when the dialog was accepted.
    app::KalvexConfiguration GetConfiguration() const;

    // A right that is none is told in a box, and the dialog stays.
    void accept() override;

  private:
    using Run = void (CCfgDlg::*)();
    struct ButtonRow;
    static const ButtonRow kButtons[];

    QWidget* MakeRights();
    QWidget* MakeAutostart();
    QLineEdit* AddRight(QFormLayout& form, const char* label, const char* name,
                        const std::string& right);
    void ChooseRight(QLineEdit& field);

    void Add();
    void Remove();
    void MoveUp();
    void MoveDown();
    void Find();
    void FindNext();
    void MoveTo();
    // Rows and selection as they are from now on.
    void Show(const workbench::SelectedRows& selected);
    void UpdateButtons();

    const app::KalvexConfiguration m_configuration;
    const Parts m_parts;
    workbench::AutostartList m_list;
    std::optional<workbench::FindRequest> m_request;
    QCheckBox* m_trayIcon;
    QSpinBox* m_period;
    QLineEdit* m_configurationRight = nullptr;
    QLineEdit* m_controlRight = nullptr;
    RowTable* m_table = nullptr;
    std::vector<QPushButton*> m_buttons;  // in the order of kButtons
};

}  // namespace kalvex::window
