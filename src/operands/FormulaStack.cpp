#include "operands/FormulaStack.h"

#include <algorithm>

namespace kalvex::operands {

void FormulaStack::Overflow() {
    Clear();
    m_script.SetError(ErrorStackOverflow, {}, false);
}

void FormulaStack::Grow() {
    m_room = std::min(4 * m_room, kCells);
    auto more = std::make_unique_for_overwrite<Cell[]>(m_room);
    for (std::size_t i = 0; i < m_size; ++i) {
        new (&more[i]) value::CVal(std::move(*At(i)));
        At(i)->~CVal();
    }
    m_more = std::move(more);
    m_cells = m_more.get();
}

}  // namespace kalvex::operands
