// The tree of a source's variables as the toolkit's views read it. Main thread.
#pragma once

#include <QAbstractItemModel>
#include <QIcon>
#include <QStringList>

#include "platform/Translator.h"
#include "workbench/model/SourceTree.h"

namespace kalvex::window {

class SourceTreeModel final : public QAbstractItemModel {
  public:
    explicit SourceTreeModel(const platform::Translator& translator);

    void SetTree(workbench::SourceTree tree);
    const workbench::SourceTree& Tree() const { return m_tree; }

    // The node of an index, 0 for an invalid one, and the other way round.
    static int NodeOf(const QModelIndex& index);
    QModelIndex IndexOf(int node) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    workbench::SourceTree m_tree;
    QStringList m_headers;
    QIcon m_groupIcon;
    QIcon m_leafIcon;
};

}  // namespace kalvex::window
