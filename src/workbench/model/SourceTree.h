// The variables of a data source as the tree from which declarations are chosen. Any thread; engine
// texts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vantrel/VarVal.h"

namespace kalvex::workbench {

struct SourceTreeNode {
    std::string text;         // of a group its own part of the path, of a leaf the variable's name
    std::string description;  // of a leaf; empty when it says no more than the name
    int parent = -1;
    int row = 0;  // among its parent's children
    bool leaf = false;
    std::vector<int> children;
};

// Node 0 is the root, which nobody sees; a node stands behind whatever is shown above it.
class SourceTree {
  public:
    SourceTree() : m_nodes(1) {}
    // Groups by the path of each variable, its parts separated by "/", in the order in which they
    // come; empty parts are passed over. With a filter only those whose name or description matches
    // it, and their groups.
    SourceTree(const vantrel::CObjInfoList& variables, std::string_view filter);

    int GetCount() const { return static_cast<int>(m_nodes.size()); }
    const SourceTreeNode& operator[](int node) const {
        return m_nodes[static_cast<std::size_t>(node)];
    }
    // The first on the top level, or -1.
    int GetFirstGroup() const;

    // A declaration for each leaf among the nodes, in the order of the tree, with its line end.
    std::vector<std::string> GetDeclarations(std::vector<int> nodes, std::string_view source) const;

  private:
    std::vector<SourceTreeNode> m_nodes;
};

}  // namespace kalvex::workbench
