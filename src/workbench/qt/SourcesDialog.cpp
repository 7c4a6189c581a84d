#include "workbench/qt/SourcesDialog.h"

#include <QHBoxLayout>
#include <utility>

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

using platform::Translatable;

constexpr const char* kTitle = Translatable("Źródła");
constexpr const char* kName = Translatable("Nazwa");
constexpr const char* kUser = Translatable("Użytkownik");
constexpr const char* kAdd = Translatable("&Dodaj");
constexpr const char* kChange = Translatable("&Zmień");
constexpr const char* kRemove = Translatable("&Usuń");

}  // namespace

SourcesDialog::SourcesDialog(std::vector<sources::CSourceDesc> sources,
                             const platform::CCrypt& crypt, app::MainWindow& window,
                             const platform::Translator& translator, QWidget* parent)
    : FormDialog(Translated(translator, kTitle), parent),
      m_sources(std::move(sources)),
      m_parts{m_sources, crypt, window, translator},
      m_table(new RowTable(Translated(translator, kTitle),
                           {Translated(translator, kName), Translated(translator, kUser)}, this)) {
    m_table->setObjectName(QStringLiteral("sourcesTable"));
    AddContent(m_table);
    auto* bar = new QWidget(this);
    auto* buttons = new QHBoxLayout(bar);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->addWidget(AddButton(kAdd, "addSource", &SourcesDialog::Add));
    buttons->addWidget(m_change = AddButton(kChange, "changeSource", &SourcesDialog::Change));
    buttons->addWidget(m_remove = AddButton(kRemove, "removeSource", &SourcesDialog::Remove));
    AddContent(bar, 0);
    connect(m_table, &QTableWidget::itemSelectionChanged, this, [this] { UpdateButtons(); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this] { Change(); });
    Show({});
    m_table->resizeColumnToContents(0);
    m_table->setFocus();
}

QPushButton* SourcesDialog::AddButton(const char* polish, const char* name,
                                      void (SourcesDialog::*run)()) {
    auto* button = new QPushButton(Translated(m_parts.translator, polish), this);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, run] { (this->*run)(); });
    return button;
}

void SourcesDialog::Show(const std::vector<std::size_t>& selected) {
    std::vector<QStringList> rows;
    for (const sources::CSourceDesc& source : m_sources) {
        rows.push_back({ToQt(source.name), ToQt(source.user)});
    }
    m_table->SetRows(rows);
    m_table->SelectRows(selected);
    UpdateButtons();
}

void SourcesDialog::UpdateButtons() {
    const std::size_t count = m_table->GetSelectedRows().size();
    m_change->setEnabled(count == 1);
    m_remove->setEnabled(count > 0);
}

void SourcesDialog::Edit(std::size_t index) {
    SourceDialog dialog(m_parts, index, this);
    if (dialog.exec() != Accepted) return;
    sources::CSourceDesc source = dialog.GetSource();
    if (index == m_sources.size()) m_sources.emplace_back();
    m_sources[index] = std::move(source);
    Show({index});
}

void SourcesDialog::Add() {
    Edit(m_sources.size());
}

void SourcesDialog::Change() {
    const std::vector<std::size_t> rows = m_table->GetSelectedRows();
    if (rows.size() == 1) Edit(rows.front());
}

void SourcesDialog::Remove() {
    const std::vector<std::size_t> rows = m_table->GetSelectedRows();
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        m_sources.erase(m_sources.begin() + static_cast<std::ptrdiff_t>(*row));
    }
    Show({});
}

}  // namespace kalvex::window
