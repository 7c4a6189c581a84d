#include "workbench/qt/UserGroupDialog.h"

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kTitle = platform::Translatable("Poziom lub grupa");
constexpr const char* kUsers = platform::Translatable("Użytkownicy");

}  // namespace

UserGroupDialog::UserGroupDialog(std::vector<workbench::RightChoice> choices,
                                 const std::string& right, const platform::Translator& translator,
                                 QWidget* parent)
    : FormDialog(Translated(translator, kTitle), parent),
      m_choices(std::move(choices)),
      m_table(new RowTable(Translated(translator, kTitle),
                           {Translated(translator, kTitle), Translated(translator, kUsers)},
                           this)) {
    m_table->setObjectName(QStringLiteral("rightChoices"));
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    std::vector<QStringList> rows;
    std::vector<std::size_t> selected;
    for (const workbench::RightChoice& choice : m_choices) {
        QStringList users;
        for (const std::string& user : choice.users) users += ToQt(user);
        if (choice.right == right) selected = {rows.size()};
        rows.push_back({ToQt(choice.right), users.join(QLatin1String(", "))});
    }
    m_table->SetRows(rows);
    m_table->resizeColumnToContents(0);
    AddContent(m_table);
    connect(m_table, &QTableWidget::itemSelectionChanged, this,
            [this] { Ok().setEnabled(!GetRight().empty()); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this] { accept(); });
    m_table->SelectRows(selected);
    Ok().setEnabled(!selected.empty());
    m_table->setFocus();
}

std::string UserGroupDialog::GetRight() const {
    const std::vector<std::size_t> rows = m_table->GetSelectedRows();
    return rows.empty() ? std::string() : m_choices[rows.front()].right;
}

}  // namespace kalvex::window
