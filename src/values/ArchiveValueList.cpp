#include "values/ArchiveValueList.h"

#include <algorithm>

namespace kalvex {

void CArchiveValueList::SortTimes() {
    std::ranges::stable_sort(m_arrValues, {}, &CVal::GetTime);
}

}  // namespace kalvex
