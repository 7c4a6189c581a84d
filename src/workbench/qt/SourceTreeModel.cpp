#include "workbench/qt/SourceTreeModel.h"

#include <QApplication>
#include <QStyle>
#include <utility>

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kHeaders[] = {
    platform::Translatable("Nazwa"),
    platform::Translatable("Opis"),
};

}  // namespace

SourceTreeModel::SourceTreeModel(const platform::Translator& translator)
    : m_groupIcon(QApplication::style()->standardIcon(QStyle::SP_DirIcon)),
      m_leafIcon(QApplication::style()->standardIcon(QStyle::SP_FileIcon)) {
    for (const char* header : kHeaders) m_headers << Translated(translator, header);
}

void SourceTreeModel::SetTree(workbench::SourceTree tree) {
    beginResetModel();
    m_tree = std::move(tree);
    endResetModel();
}

int SourceTreeModel::NodeOf(const QModelIndex& index) {
    return index.isValid() ? static_cast<int>(index.internalId()) : 0;
}

QModelIndex SourceTreeModel::IndexOf(int node) const {
    if (node <= 0) return {};
    return createIndex(m_tree[node].row, 0, static_cast<quintptr>(node));
}

QModelIndex SourceTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) return {};
    const int node = m_tree[NodeOf(parent)].children[static_cast<std::size_t>(row)];
    return createIndex(row, column, static_cast<quintptr>(node));
}

QModelIndex SourceTreeModel::parent(const QModelIndex& child) const {
    return IndexOf(m_tree[NodeOf(child)].parent);
}

int SourceTreeModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0) return 0;
    return static_cast<int>(m_tree[NodeOf(parent)].children.size());
}

int SourceTreeModel::columnCount(const QModelIndex&) const {
    return static_cast<int>(std::size(kHeaders));
}

QVariant SourceTreeModel::data(const QModelIndex& index, int role) const {
    const workbench::SourceTreeNode& node = m_tree[NodeOf(index)];
    if (role == Qt::DisplayRole) return ToQt(index.column() == 0 ? node.text : node.description);
    if (role != Qt::DecorationRole || index.column() != 0) return {};
    return node.leaf ? m_leafIcon : m_groupIcon;
}

QVariant SourceTreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return m_headers.value(section);
}

}  // namespace kalvex::window
