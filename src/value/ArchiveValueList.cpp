#include "value/ArchiveValueList.h"

#include <algorithm>

namespace kalvex::value {

void CArchiveValueList::Add(CVal value) {
    if (!m_pValues) m_pValues = std::make_unique<std::deque<CVal>>();
    m_pValues->push_back(std::move(value));
}

void CArchiveValueList::SortTimes() {
    if (m_pValues) std::ranges::stable_sort(*m_pValues, {}, &CVal::GetTime);
}

}  // namespace kalvex::value
