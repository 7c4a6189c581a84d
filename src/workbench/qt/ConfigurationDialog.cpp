#include "workbench/qt/ConfigurationDialog.h"

#include <QApplication>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QResizeEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "platform/Paths.h"
#include "text/TextFormat.h"
#include "workbench/model/RightChoices.h"
#include "workbench/qt/FileFilters.h"
#include "workbench/qt/LineDialog.h"
#include "workbench/qt/Texts.h"
#include "workbench/qt/UserGroupDialog.h"

namespace kalvex::window {

namespace {

using platform::Translatable;

constexpr const char* kTitle = Translatable("Konfiguracja");
constexpr const char* kTrayIcon = Translatable("&Ikona w pasku zadań");
constexpr const char* kPeriod = Translatable("&Częstotliwość odświeżania okna zmiennych  [ms]");
constexpr const char* kRights = Translatable("Uprawnienia (poziom lub grupa)");
constexpr const char* kConfigurationRight = Translatable("&Modyfikacja konfiguracji");
constexpr const char* kControlRight = Translatable("&Sterowanie skryptem");
constexpr const char* kAutostart = Translatable("Autostart");
constexpr const char* kId = Translatable("Id");
constexpr const char* kFileName = Translatable("Nazwa pliku");
constexpr const char* kMoveTo = Translatable("Przenieś do");
constexpr const char* kScripts =
    Translatable("Skrypty Kalvex (*.kx)|*.kx|Wszystkie pliki (*.*)|*.*||");

constexpr int kShortestPeriod = 10;  // milliseconds
constexpr int kLongestPeriod = 3600000;
constexpr int kPeriodStep = 100;

// The first column has a twentieth of what a twentieth is taken off, and as much as it needs.
class AutostartTable final : public RowTable {
  public:
    using RowTable::RowTable;

  protected:
    void resizeEvent(QResizeEvent* event) override {
        RowTable::resizeEvent(event);
        const int width = event->size().width();
        setColumnWidth(0, std::max((width - width / 20) / 20, sizeHintForColumn(0)));
    }
};

}  // namespace

struct CCfgDlg::ButtonRow {
    const char* text;
    const char* name;
    const char* keys;
    Run run;
    bool needsSelection;
};

const CCfgDlg::ButtonRow CCfgDlg::kButtons[] = {
    {Translatable("&Dodaj"), "addScript", "", &CCfgDlg::Add, false},
    {Translatable("&Usuń"), "removeScript", "", &CCfgDlg::Remove, true},
    {"<", "moveUp", "Alt+Up", &CCfgDlg::MoveUp, true},
    {">", "moveDown", "Alt+Down", &CCfgDlg::MoveDown, true},
    {Translatable("&Znajdź"), "find", "", &CCfgDlg::Find, false},
    {Translatable("Znajdź &następną"), "findNext", "", &CCfgDlg::FindNext, false},
    {Translatable("&Przenieś do…"), "moveTo", "", &CCfgDlg::MoveTo, true},
};

QStringList AskForScripts(QWidget* parent, const QString& folder,
                          const platform::Translator& translator) {
    QFileDialog dialog(parent, QString(), folder, ToFileFilter(Translated(translator, kScripts)));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setDefaultSuffix(QStringLiteral("kx"));
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

CCfgDlg::CCfgDlg(app::KalvexConfiguration configuration, Parts parts, QWidget* parent)
    : FormDialog(Translated(parts.translator, kTitle), parent),
      m_configuration(std::move(configuration)),
      m_parts(std::move(parts)),
      m_list(m_configuration.autostart),
      m_trayIcon(new QCheckBox(Translated(m_parts.translator, kTrayIcon), this)),
      m_period(new QSpinBox(this)) {
    m_trayIcon->setObjectName(QStringLiteral("trayIcon"));
    m_trayIcon->setAccessibleName(WithoutMnemonic(m_trayIcon->text()));
    m_trayIcon->setChecked(m_configuration.trayIcon);
    m_period->setObjectName(QStringLiteral("refreshPeriod"));
    m_period->setRange(kShortestPeriod, kLongestPeriod);
    m_period->setSingleStep(kPeriodStep);
    m_period->setValue(
        static_cast<int>(std::min<unsigned int>(m_configuration.refreshPeriod, kLongestPeriod)));
    Fields().addRow(m_trayIcon);
    AddField(Fields(), Translated(m_parts.translator, kPeriod), *m_period);
    AddContent(MakeRights(), 0);
    AddContent(MakeAutostart());
    Show({});
    m_trayIcon->setFocus();
}

QWidget* CCfgDlg::MakeRights() {
    auto* group = new QGroupBox(Translated(m_parts.translator, kRights), this);
    auto* form = new QFormLayout(group);
    m_configurationRight = AddRight(*form, kConfigurationRight, "configurationRight",
                                    m_configuration.configurationRight);
    m_controlRight = AddRight(*form, kControlRight, "controlRight", m_configuration.controlRight);
    return group;
}

QLineEdit* CCfgDlg::AddRight(QFormLayout& form, const char* label, const char* name,
                             const std::string& right) {
    const QString text = Translated(m_parts.translator, label);
    auto* row = new QWidget(form.parentWidget());
    auto* box = new QHBoxLayout(row);
    box->setContentsMargins(0, 0, 0, 0);
    auto* field = new QLineEdit(ToQt(right), row);
    auto* choose = new QPushButton(QStringLiteral(">>"), row);
    box->addWidget(field);
    box->addWidget(choose);
    field->setObjectName(QLatin1String(name));
    choose->setObjectName(QLatin1String(name) + QStringLiteral("Choice"));
    choose->setAccessibleDescription(WithoutMnemonic(text));
    choose->setAutoDefault(false);
    connect(choose, &QPushButton::clicked, this, [this, field] { ChooseRight(*field); });
    AddField(form, text, *row);
    row->setAccessibleName({});
    field->setAccessibleName(WithoutMnemonic(text));
    static_cast<QLabel*>(form.labelForField(row))->setBuddy(field);
    return field;
}

QWidget* CCfgDlg::MakeAutostart() {
    const QString name = Translated(m_parts.translator, kAutostart);
    auto* group = new QGroupBox(name, this);
    m_table = new AutostartTable(
        name, {Translated(m_parts.translator, kId), Translated(m_parts.translator, kFileName)},
        group);
    m_table->setObjectName(QStringLiteral("autostartTable"));
    auto* grid = new QGridLayout(group);
    grid->addWidget(m_table, 0, 0, 1, static_cast<int>(std::size(kButtons)));
    for (const ButtonRow& row : kButtons) {
        auto* button = new QPushButton(Translated(m_parts.translator, row.text), group);
        button->setObjectName(QLatin1String(row.name));
        button->setAutoDefault(false);
        if (*row.keys != '\0') button->setShortcut(QKeySequence(QLatin1String(row.keys)));
        connect(button, &QPushButton::clicked, this, [this, &row] { (this->*row.run)(); });
        grid->addWidget(button, 1, static_cast<int>(m_buttons.size()));
        m_buttons.push_back(button);
    }
    connect(m_table, &QTableWidget::itemSelectionChanged, this, [this] { UpdateButtons(); });
    return group;
}

void CCfgDlg::ChooseRight(QLineEdit& field) {
    UserGroupDialog dialog(workbench::ListRightChoices(m_parts.listUsers()), FromQt(field.text()),
                           m_parts.translator, this);
    if (dialog.exec() == Accepted) field.setText(ToQt(dialog.GetRight()));
}

// ---- the scripts to start

void CCfgDlg::Add() {
    const QStringList files =
        m_parts.askForScripts(this, QString::fromStdString(m_parts.workingDir), m_parts.translator);
    std::vector<std::string> paths;
    for (const QString& file : files) {
        if (platform::HasEngineForm(file.toStdString())) {
            paths.push_back(FromQt(file));
            continue;
        }
        m_parts.window.ShowMessage(text::FormatText(
            m_parts.translator.Translate(
                "Nazwa pliku %s ma znaki spoza Windows-1250, więc skrypt nie otworzy się"),
            {FromQt(file)}));
    }
    Show(m_list.Add(paths, m_table->GetSelectedRows()));
}

void CCfgDlg::Remove() {
    Show(m_list.Remove(m_table->GetSelectedRows()));
}

void CCfgDlg::MoveUp() {
    Show(m_list.MoveUp(m_table->GetSelectedRows()));
}

void CCfgDlg::MoveDown() {
    Show(m_list.MoveDown(m_table->GetSelectedRows()));
}

void CCfgDlg::MoveTo() {
    const workbench::SelectedRows selected = m_table->GetSelectedRows();
    if (selected.empty()) return;
    const std::optional<int> number =
        CLineDlg::Ask(Translated(m_parts.translator, kMoveTo), m_parts.translator,
                      static_cast<int>(selected.front()) + 1, this);
    if (number) Show(m_list.MoveTo(*number, selected));
}

void CCfgDlg::Find() {
    const std::optional<workbench::FindRequest> request = m_parts.askWhatToFind(this);
    if (!request) return;
    m_request = request;
    FindNext();
}

void CCfgDlg::FindNext() {
    if (!m_request) return Find();
    const workbench::AutostartList::Found found =
        m_list.Find(*m_request, m_table->GetSelectedRows());
    for (int i = 0; i < found.beeps; ++i) QApplication::beep();
    if (found.row) m_table->SelectRows({*found.row});
}

void CCfgDlg::Show(const workbench::SelectedRows& selected) {
    std::vector<QStringList> rows;
    for (const std::string& path : m_list.Paths()) {
        rows.push_back({ToQt(workbench::AutostartList::IdOf(rows.size())), ToQt(path)});
    }
    m_table->SetRows(rows);
    m_table->SelectRows(selected);
    UpdateButtons();
}

void CCfgDlg::UpdateButtons() {
    const workbench::SelectedRows selected = m_table->GetSelectedRows();
    for (std::size_t i = 0; i < m_buttons.size(); ++i) {
        m_buttons[i]->setEnabled(!kButtons[i].needsSelection || !selected.empty());
    }
    m_buttons.front()->setText(
        Translated(m_parts.translator, workbench::CaptionOfAdding(selected)));
}

// ---- the end

app::KalvexConfiguration CCfgDlg::GetConfiguration() const {
    app::KalvexConfiguration configuration = m_configuration;
    configuration.trayIcon = m_trayIcon->isChecked();
    configuration.refreshPeriod = static_cast<unsigned int>(m_period->value());
    configuration.configurationRight = FromQt(m_configurationRight->text());
    configuration.controlRight = FromQt(m_controlRight->text());
    configuration.autostart = m_list.Paths();
    return configuration;
}

void CCfgDlg::accept() {
    for (QLineEdit* field : {m_configurationRight, m_controlRight}) {
        if (platform::IsRightText(FromQt(field->text()))) continue;
        m_parts.window.ShowMessage(text::FormatText(
            m_parts.translator.Translate("%s: należy podać poziom od 0 do 100 albo nazwę grupy"),
            {FromQt(field->accessibleName())}));
        field->setFocus();
        return;
    }
    FormDialog::accept();
}

}  // namespace kalvex::window
