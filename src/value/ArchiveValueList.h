// An ordered set of values with time stamps: the answer of a range read, or what an archive write
// sends.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <utility>

#include "value/Value.h"

namespace kalvex::value {

class CArchiveValueList {
  public:
    void Add(CVal value);
    const CVal* Get(std::size_t index) const {
        return index < GetSize() ? &(*m_values)[index] : nullptr;
    }
    std::size_t GetSize() const { return m_values ? m_values->size() : 0; }
    void RemoveAll() { m_values.reset(); }
    void SortTimes();  // ascending; equal times keep their order

  private:
    // Grows without a second copy of a month of seconds. Every remote variable has a list, and most
    // of them never hold anything.
    std::unique_ptr<std::deque<CVal>> m_values;
};

}  // namespace kalvex::value
