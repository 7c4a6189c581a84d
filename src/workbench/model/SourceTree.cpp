#include "workbench/model/SourceTree.h"

#include <algorithm>
#include <map>
#include <utility>

#include "text/PatternMatch.h"
#include "text/TextFormat.h"
#include "vantrel/Attributes.h"

namespace kalvex::workbench {

namespace {

constexpr char kPathSeparator = '/';
constexpr const char* kDeclaration = "REMOTE %s %s@%s\r\n";

// Groups are made for all variables, so that their order does not depend on the filter; what has no
// leaf is left behind in the end.
class Builder {
  public:
    explicit Builder(std::string_view filter) : m_filter(filter), m_nodes(1), m_kept{true} {}

    void Add(const vantrel::CVarDefInfo& variable) {
        int parent = 0;
        std::string_view path = variable.GetText(vantrel::Attribute::Path);
        while (!path.empty()) {
            const std::size_t end = std::min(path.find(kPathSeparator), path.size());
            if (end > 0) parent = Group(parent, path.substr(0, end));
            path.remove_prefix(std::min(end + 1, path.size()));
        }
        const std::string& name = variable.GetName();
        const std::string& described = variable.GetText(vantrel::Attribute::DescName);
        const std::string_view description = described == name ? std::string_view() : described;
        if (!Passes(name) && !Passes(description)) return;
        const int leaf = Append(parent, name);
        m_nodes.back().description = description;
        m_nodes.back().leaf = true;
        for (int node = leaf; !m_kept[static_cast<std::size_t>(node)];) {
            m_kept[static_cast<std::size_t>(node)] = true;
            node = At(node).parent;
        }
    }

    // What is kept, in the order in which it is shown.
    std::vector<SourceTreeNode> Finish() {
        std::vector<SourceTreeNode> shown;
        std::vector<std::pair<int, int>> waiting{{0, -1}};  // node, parent among those shown
        while (!waiting.empty()) {
            const std::pair<int, int> next = waiting.back();
            waiting.pop_back();
            const int place = static_cast<int>(shown.size());
            const std::vector<int> children = std::exchange(At(next.first).children, {});
            SourceTreeNode& node = shown.emplace_back(std::move(At(next.first)));
            node.parent = next.second;
            if (node.parent >= 0) {
                std::vector<int>& siblings = shown[static_cast<std::size_t>(node.parent)].children;
                node.row = static_cast<int>(siblings.size());
                siblings.push_back(place);
            }
            for (auto child = children.rbegin(); child != children.rend(); ++child) {
                if (m_kept[static_cast<std::size_t>(*child)]) waiting.emplace_back(*child, place);
            }
        }
        return shown;
    }

  private:
    bool Passes(std::string_view text) const {
        return m_filter.empty() ||
               text::CompareWithPattern(text, m_filter, text::PatternOption::VariableNames);
    }

    SourceTreeNode& At(int node) { return m_nodes[static_cast<std::size_t>(node)]; }

    int Group(int parent, std::string_view part) {
        const auto [group, isNew] = m_groups.try_emplace({parent, std::string(part)}, 0);
        if (isNew) group->second = Append(parent, part);
        return group->second;
    }

    int Append(int parent, std::string_view text) {
        const int node = static_cast<int>(m_nodes.size());
        m_nodes.emplace_back().text = text;
        m_nodes.back().parent = parent;
        At(parent).children.push_back(node);
        m_kept.push_back(false);
        return node;
    }

    const std::string_view m_filter;
    std::vector<SourceTreeNode> m_nodes;
    std::vector<bool> m_kept;
    std::map<std::pair<int, std::string>, int> m_groups;  // by parent and part
};

}  // namespace

SourceTree::SourceTree(const vantrel::CObjInfoList& variables, std::string_view filter) {
    Builder builder(filter);
    for (const vantrel::CVarDefInfo& variable : variables) builder.Add(variable);
    m_nodes = builder.Finish();
}

int SourceTree::GetFirstGroup() const {
    const std::vector<int>& top = m_nodes.front().children;
    const auto group = std::ranges::find_if(top, [this](int node) { return !(*this)[node].leaf; });
    return group == top.end() ? -1 : *group;
}

std::vector<std::string> SourceTree::GetDeclarations(std::vector<int> nodes,
                                                     std::string_view source) const {
    std::ranges::sort(nodes);
    std::vector<std::string> lines;
    for (const int node : nodes) {
        const std::string& name = (*this)[node].text;
        if (!(*this)[node].leaf || name.empty()) continue;
        lines.push_back(text::FormatText(kDeclaration, {name, source, name}));
    }
    return lines;
}

}  // namespace kalvex::workbench
