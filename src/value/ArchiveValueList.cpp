#include "value/ArchiveValueList.h"

#include <algorithm>

namespace kalvex::value {

void CArchiveValueList::Add(CVal value) {
    if (!m_values) m_values = std::make_unique<std::deque<CVal>>();
    m_values->push_back(std::move(value));
}

void CArchiveValueList::SortTimes() {
    if (m_values) std::ranges::stable_sort(*m_values, {}, &CVal::GetTime);
}

}  // namespace kalvex::value
