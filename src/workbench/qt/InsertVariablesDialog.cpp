#include "workbench/qt/InsertVariablesDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>
#include <utility>

#include "text/TextFormat.h"
#include "workbench/qt/LabelledField.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

using workbench::SourceVariables;

constexpr const char* kTitle = platform::Translatable("Zmienne");
constexpr const char* kSource = platform::Translatable("Źró&dło");
constexpr const char* kFilter = platform::Translatable("&Filtr");
constexpr const char* kFilterButton = platform::Translatable("Filt&ruj");
constexpr const char* kInsert = platform::Translatable("&Wstaw");
constexpr const char* kNoName = platform::Translatable("Nie podano nazwy serwera");
constexpr const char* kLoading = platform::Translatable("Wczytywanie zmiennych źródła %s...");
constexpr const char* kNotLoaded = platform::Translatable("Nie można wczytać zmiennych źródła %s");

constexpr int kNameCharacters = 30;
constexpr int kWidthCharacters = 70;
constexpr int kHeightLines = 24;

QPushButton* NamedButton(const QString& text) {
    auto* const button = new QPushButton(text);
    button->setAccessibleName(WithoutMnemonic(text));
    return button;
}

}  // namespace

CInsertVarsDlg::CInsertVarsDlg(Parts parts, QWidget* parent)
    : QDialog(parent),
      m_parts(std::move(parts)),
      m_model(m_parts.translator),
      m_restore(m_parts.memory.position >= 0),
      m_source(new QComboBox),
      m_filter(new QLineEdit),
      m_filterButton(NamedButton(Translated(m_parts.translator, kFilterButton))),
      m_tree(new QTreeView),
      m_state(new QLabel),
      m_insert(NamedButton(Translated(m_parts.translator, kInsert))) {
    setAttribute(Qt::WA_DeleteOnClose);
    setModal(false);
    setObjectName("insertVariablesDialog");
    setWindowTitle(Translated(m_parts.translator, kTitle));
    AddWidgets();
    Connect();
    for (const std::string& source : m_parts.sources) {
        if (!source.empty()) m_source->addItem(ToQt(source));
    }
    m_source->setCurrentIndex(m_source->findText(ToQt(m_parts.memory.source)));
    m_filter->setText(ToQt(m_parts.memory.filter));
    m_source->setFocus();
    if (m_source->currentIndex() >= 0) Load();
}

void CInsertVarsDlg::AddWidgets() {
    auto* const filter = new QHBoxLayout;
    filter->addWidget(m_filter);
    filter->addWidget(m_filterButton);
    m_filterButton->setAutoDefault(false);
    auto* const form = new QFormLayout;
    AddField(*form, Translated(m_parts.translator, kSource), *m_source);
    form->addRow(LabelFor(*m_filter, Translated(m_parts.translator, kFilter)), filter);

    m_tree->setObjectName("sourceTree");
    m_tree->setAccessibleName(Translated(m_parts.translator, kTitle));
    m_tree->setModel(&m_model);
    m_tree->setUniformRowHeights(true);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setColumnWidth(0, fontMetrics().averageCharWidth() * kNameCharacters);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    buttons->addButton(m_insert, QDialogButtonBox::AcceptRole);
    m_insert->setEnabled(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_tree);
    layout->addWidget(m_state);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * kWidthCharacters,
           fontMetrics().lineSpacing() * kHeightLines);
}

void CInsertVarsDlg::Connect() {
    connect(m_source, &QComboBox::activated, this, [this] { ChooseSource(); });
    connect(m_filterButton, &QPushButton::clicked, this, [this] { Load(); });
    connect(m_tree->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { m_insert->setEnabled(m_tree->selectionModel()->hasSelection()); });
    // A tree that is built anew has nothing selected, of which the selection says nothing.
    connect(&m_model, &QAbstractItemModel::modelReset, this,
            [this] { m_insert->setEnabled(false); });
}

// Enter in the filter is no consent.
void CInsertVarsDlg::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && focusWidget() == m_filter) return Load();
    QDialog::keyPressEvent(event);
}

// ---- the tree: what is typed into the filter while it is loaded counts when it comes

void CInsertVarsDlg::ChooseSource() {
    if (FromQt(m_source->currentText()) == m_shownSource) return;
    m_restore = false;
    m_parts.variables.MarkReload();
    Load();
}

void CInsertVarsDlg::Load() {
    const std::string source = FromQt(m_source->currentText());
    if (source.empty()) return m_parts.showMessage(m_parts.translator.Translate(kNoName));
    if (m_loading && source == m_shownSource) return;
    m_parts.memory.source = m_shownSource = source;
    m_loading = true;
    m_model.SetTree({});
    ShowState(kLoading);
    const int load = ++m_loads;
    const auto take = [self = QPointer(this), load](const vantrel::CObjInfoList* list) {
        if (self && self->m_loads == load) self->ShowVariables(list);
    };
    if (m_parts.variables.Ask(source, take) == SourceVariables::Answer::Ready) {
        ShowVariables(&m_parts.variables.List());
    }
}

void CInsertVarsDlg::ShowState(const char* polish) {
    const std::string text = m_parts.translator.Translate(polish);
    m_state->setText(ToQt(text::FormatText(text, {m_shownSource})));
}

void CInsertVarsDlg::ShowVariables(const vantrel::CObjInfoList* list) {
    m_loading = false;
    if (list == nullptr) return ShowState(kNotLoaded);
    m_state->clear();
    m_model.SetTree({*list, FromQt(m_filter->text())});
    if (std::exchange(m_restore, false)) {
        RestorePosition();
    } else {
        m_tree->expand(m_model.IndexOf(m_model.Tree().GetFirstGroup()));
    }
}

// ---- the position

std::string CInsertVarsDlg::PathOf(int node) const {
    std::string path;
    for (; node > 0; node = m_model.Tree()[node].parent) {
        path.insert(0, m_model.Tree()[node].text + '/');
    }
    return path;
}

// Those that are seen: of the groups within one that is closed nothing is told.
template <class Visit>
void CInsertVarsDlg::ForEachGroup(Visit visit) const {
    for (int node = 1; node < m_model.Tree().GetCount(); ++node) {
        const workbench::SourceTreeNode& group = m_model.Tree()[node];
        const bool isSeen = group.parent == 0 || m_tree->isExpanded(m_model.IndexOf(group.parent));
        if (!group.leaf && isSeen) visit(m_model.IndexOf(node), PathOf(node));
    }
}

void CInsertVarsDlg::KeepPosition() {
    InsertMemory& memory = m_parts.memory;
    memory.filter = FromQt(m_filter->text());
    memory.position = m_tree->verticalScrollBar()->value();
    memory.openGroups.clear();
    ForEachGroup([&](const QModelIndex& group, const std::string& path) {
        if (m_tree->isExpanded(group)) memory.openGroups.insert(path);
    });
}

// The scroll bar has its range once the dialog has its size.
void CInsertVarsDlg::RestorePosition() {
    ForEachGroup([&](const QModelIndex& group, const std::string& path) {
        if (m_parts.memory.openGroups.contains(path)) m_tree->expand(group);
    });
    QTimer::singleShot(0, m_tree, [tree = m_tree, position = m_parts.memory.position] {
        tree->verticalScrollBar()->setValue(position);
    });
}

void CInsertVarsDlg::accept() {
    std::vector<int> nodes;
    for (const QModelIndex& index : m_tree->selectionModel()->selectedRows()) {
        nodes.push_back(SourceTreeModel::NodeOf(index));
    }
    const std::vector<std::string> lines =
        m_model.Tree().GetDeclarations(std::move(nodes), m_shownSource);
    if (m_tree->selectionModel()->hasSelection()) KeepPosition();
    QDialog::accept();
    if (!lines.empty()) m_parts.insert(lines);
}

}  // namespace kalvex::window
