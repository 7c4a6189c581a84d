// An ordered set of values with time stamps: the answer of a range read, or what an archive write
// sends.
#pragma once

#include <cstddef>
#include <deque>
#include <utility>

#include "values/Value.h"

namespace kalvex {

class CArchiveValueList {
  public:
    void Add(CVal value) { m_arrValues.push_back(std::move(value)); }
    const CVal* Get(std::size_t index) const {
        return index < m_arrValues.size() ? &m_arrValues[index] : nullptr;
    }
    std::size_t GetSize() const { return m_arrValues.size(); }
    void RemoveAll() { m_arrValues.clear(); }
    void SortTimes();  // ascending; equal times keep their order

  private:
    std::deque<CVal> m_arrValues;  // grows without a second copy of a month of seconds
};

}  // namespace kalvex
