// The table of variables as the toolkit's views read it. Main thread.
#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <functional>

#include "platform/Translator.h"
#include "workbench/model/VariablesTable.h"

namespace kalvex::window {

class VariablesModel final : public QAbstractTableModel {
  public:
    // Brings the table up to date and tells what that has changed.
    using Refresher = std::function<workbench::TableChanges(workbench::VariablesTable&)>;

    explicit VariablesModel(const platform::Translator& translator);

    // Views hear of the cells that change and of no other.
    void Refresh(const Refresher& refresh);
    const workbench::VariablesTable& Table() const { return m_table; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    workbench::VariablesTable m_table;
    int m_shownRows = 0;  // that the views know of
    QStringList m_headers;
};

}  // namespace kalvex::window
