#include "workbench/model/AutostartList.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "platform/Translator.h"
#include "text/PatternMatch.h"

namespace kalvex::workbench {

namespace {

constexpr const char* kAdd = platform::Translatable("&Dodaj");
constexpr const char* kInsert = platform::Translatable("&Wstaw");

bool IsIn(const SelectedRows& rows, std::size_t row) {
    return std::ranges::binary_search(rows, row);
}

// Takes the selected rows out of the list; they are the answer.
std::vector<std::string> TakeOut(std::vector<std::string>& paths, const SelectedRows& selected) {
    std::vector<std::string> taken;
    std::vector<std::string> left;
    for (std::size_t row = 0; row < paths.size(); ++row) {
        (IsIn(selected, row) ? taken : left).push_back(std::move(paths[row]));
    }
    paths = std::move(left);
    return taken;
}

void PutIn(std::vector<std::string>& paths, std::size_t row, std::vector<std::string> added) {
    paths.insert(paths.begin() + static_cast<std::ptrdiff_t>(row),
                 std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
}

SelectedRows RowsFrom(std::size_t first, std::size_t count) {
    SelectedRows rows(count);
    std::iota(rows.begin(), rows.end(), first);
    return rows;
}

}  // namespace

const char* CaptionOfAdding(const SelectedRows& selected) {
    return selected.empty() ? kAdd : kInsert;
}

SelectedRows AutostartList::Add(const std::vector<std::string>& paths,
                                const SelectedRows& selected) {
    PutIn(m_paths, selected.empty() ? m_paths.size() : selected.front(), paths);
    SelectedRows moved = selected;
    for (std::size_t& row : moved) row += paths.size();
    return moved;
}

SelectedRows AutostartList::Remove(const SelectedRows& selected) {
    TakeOut(m_paths, selected);
    return {};
}

SelectedRows AutostartList::MoveUp(const SelectedRows& selected) {
    SelectedRows rows = selected;
    std::size_t free = 0;  // the first place that a row may move to
    for (std::size_t& row : rows) {
        if (row > free) {
            std::swap(m_paths[row], m_paths[row - 1]);
            --row;
        }
        free = row + 1;
    }
    return rows;
}

SelectedRows AutostartList::MoveDown(const SelectedRows& selected) {
    SelectedRows rows = selected;
    std::size_t end = m_paths.size();
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        if (*row + 1 < end) {
            std::swap(m_paths[*row], m_paths[*row + 1]);
            ++*row;
        }
        end = *row;
    }
    return rows;
}

bool AutostartList::IsRowNumber(int number) const {
    return number >= 1 && static_cast<std::size_t>(number) <= m_paths.size();
}

SelectedRows AutostartList::MoveTo(int number, const SelectedRows& selected) {
    if (selected.empty() || !IsRowNumber(number)) return selected;
    std::vector<std::string> moved = TakeOut(m_paths, selected);
    const std::size_t first = std::min(static_cast<std::size_t>(number - 1), m_paths.size());
    PutIn(m_paths, first, std::move(moved));
    return RowsFrom(first, selected.size());
}

AutostartList::Found AutostartList::Find(const FindRequest& request,
                                         const SelectedRows& selected) const {
    const auto matches = [&request](const std::string& path) {
        return text::CompareWithPattern(path, request.pattern, request.options);
    };
    const std::size_t behind = selected.empty() ? 0 : selected.back() + 1;
    Found found;
    for (const std::size_t start : {behind, std::size_t{0}}) {
        const auto hit = std::find_if(m_paths.begin() + static_cast<std::ptrdiff_t>(start),
                                      m_paths.end(), matches);
        if (hit != m_paths.end()) {
            found.row = static_cast<std::size_t>(hit - m_paths.begin());
            return found;
        }
        ++found.beeps;
    }
    return found;
}

}  // namespace kalvex::workbench
