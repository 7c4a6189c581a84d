#include "workbench/qt/HistoryDialog.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "value/LocalTimeText.h"
#include "workbench/model/TextDifference.h"
#include "workbench/qt/DifferenceRows.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

using platform::Translatable;

constexpr const char* kSize = Translatable("%s, bajtów: %s");
constexpr const char* kNotRead = Translatable("Nie można odczytać wersji %s (%s)");
constexpr const char* kDifferences = Translatable("Różnic: %s");
constexpr const char* kPlaceOfDifferences = Translatable("Różnica %s z %s");
constexpr const char* kNoVersions = Translatable("Skrypt nie ma jeszcze żadnej zachowanej wersji.");

}  // namespace

HistoryDialog::HistoryDialog(World world, std::vector<workbench::Snapshot> versions,
                             std::string present, QWidget* parent)
    : QDialog(parent),
      m_world(std::move(world)),
      m_versions(std::move(versions)),
      m_present(std::move(present)),
      m_rows(new DifferenceRows(m_world.translator, this)),
      m_list(new QListWidget),
      m_table(MakeTable()),
      m_count(new QLabel),
      m_next(new QPushButton(Translated(m_world.translator, Translatable("&Następna różnica")))),
      m_previous(
          new QPushButton(Translated(m_world.translator, Translatable("&Poprzednia różnica")))),
      m_restore(new QPushButton(Translated(m_world.translator, Translatable("Przy&wróć")))) {
    setObjectName("historyDialog");
    setWindowTitle(Translated(m_world.translator, Translatable("Historia")));
    m_list->setObjectName("historyList");
    m_list->setAccessibleName(Translated(m_world.translator, Translatable("Wersje")));
    m_count->setObjectName("historyCount");
    m_next->setObjectName("historyNext");
    m_previous->setObjectName("historyPrevious");
    m_restore->setObjectName("historyRestore");
    m_next->setToolTip("F7");
    m_previous->setToolTip("Shift+F7");
    for (QPushButton* button : {m_next, m_previous, m_restore}) button->setAutoDefault(false);

    auto* splitter = new QSplitter;
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(m_list);
    splitter->addWidget(MakeRight());
    splitter->setStretchFactor(1, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->addButton(m_restore, QDialogButtonBox::ActionRole);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    Connect();
    resize(960, 620);
    FillVersions();
    m_list->setFocus();
}

QTableView* HistoryDialog::MakeTable() {
    auto* table = new QTableView;
    table->setObjectName("historyTable");
    table->setAccessibleName(Translated(m_world.translator, Translatable("Porównanie")));
    table->setModel(m_rows);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->setShowGrid(false);
    table->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QFontMetrics metrics(table->font());
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(metrics.height() + 4);
    QHeaderView* header = table->horizontalHeader();
    header->setMinimumSectionSize(metrics.averageCharWidth());
    table->setColumnWidth(DifferenceRows::Sign, metrics.averageCharWidth() * 4);
    for (const int column : {DifferenceRows::LeftLine, DifferenceRows::RightLine})
        table->setColumnWidth(column, metrics.averageCharWidth() * 8);
    for (const int column : {DifferenceRows::LeftText, DifferenceRows::RightText})
        header->setSectionResizeMode(column, QHeaderView::Stretch);
    return table;
}

QWidget* HistoryDialog::MakeRight() {
    auto* right = new QWidget;
    auto* layout = new QVBoxLayout(right);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* bar = new QHBoxLayout;
    bar->addWidget(m_previous);
    bar->addWidget(m_next);
    bar->addWidget(m_count, 1);
    layout->addLayout(bar);
    layout->addWidget(m_table, 1);
    return right;
}

void HistoryDialog::Connect() {
    connect(m_list, &QListWidget::currentRowChanged, this, [this](int row) { ShowVersion(row); });
    connect(m_next, &QPushButton::clicked, this, [this] { GoToDifference(1); });
    connect(m_previous, &QPushButton::clicked, this, [this] { GoToDifference(-1); });
    connect(m_restore, &QPushButton::clicked, this, [this] { Restore(); });
    auto* next = new QShortcut(QKeySequence(Qt::Key_F7), this);
    connect(next, &QShortcut::activated, this, [this] { GoToDifference(1); });
    auto* previous = new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F7), this);
    connect(previous, &QShortcut::activated, this, [this] { GoToDifference(-1); });
}

void HistoryDialog::FillVersions() {
    for (const workbench::Snapshot& version : m_versions) {
        m_list->addItem(ToQt(text::FormatText(
            m_world.translator.Translate(kSize),
            {value::FormatLocalTime(version.time), std::to_string(version.size)})));
    }
    if (!m_versions.empty()) return m_list->setCurrentRow(0);
    m_count->setText(Translated(m_world.translator, kNoVersions));
    for (QPushButton* button : {m_next, m_previous, m_restore}) button->setEnabled(false);
}

void HistoryDialog::ShowVersion(int row) {
    const workbench::Snapshot& version = m_versions[static_cast<std::size_t>(row)];
    std::string error;
    if (!workbench::SnapshotStore::Read(version, m_chosen, error)) {
        m_rows->Show(nullptr);
        m_restore->setEnabled(false);
        m_count->clear();
        return m_world.tell(
            text::FormatText(m_world.translator.Translate(kNotRead),
                             {value::FormatLocalTime(version.time), text::FromUtf8(error)}));
    }
    m_rows->Show(std::make_unique<workbench::TextDifference>(m_chosen, m_present));
    const std::size_t count = m_rows->Difference()->Differences().size();
    m_count->setText(ToQt(
        text::FormatText(m_world.translator.Translate(kDifferences), {std::to_string(count)})));
    for (QPushButton* button : {m_next, m_previous}) button->setEnabled(count > 0);
    m_restore->setEnabled(m_chosen != m_present);
}

void HistoryDialog::GoToDifference(int direction) {
    if (m_rows->Difference() == nullptr) return;
    const std::vector<int>& differences = m_rows->Difference()->Differences();
    if (differences.empty()) return;
    const QModelIndex current = m_table->currentIndex();
    const int row = current.isValid() ? current.row() : -1;
    auto place = direction > 0 ? std::ranges::upper_bound(differences, row)
                               : std::ranges::lower_bound(differences, row);
    if (direction < 0 && place != differences.begin()) --place;
    if (place == differences.end()) --place;
    const QModelIndex index = m_rows->index(*place, DifferenceRows::Sign);
    m_table->setCurrentIndex(index);
    m_table->scrollTo(index, QAbstractItemView::PositionAtCenter);
    m_count->setText(ToQt(text::FormatText(
        m_world.translator.Translate(kPlaceOfDifferences),
        {std::to_string(place - differences.begin() + 1), std::to_string(differences.size())})));
}

void HistoryDialog::Restore() {
    m_world.restore(m_chosen);
    accept();
}

}  // namespace kalvex::window
