#include "operands/ElementSequence.h"

#include <utility>

namespace kalvex::operands {

void ElementSequence::Insert(std::size_t index, value::CVal value) {
    if (index == 0) {
        m_front.push_front(std::move(value));
    } else if (index == size()) {
        m_back.push_back(std::move(value));
    } else {
        PartAt(index);
        m_front.push_back(std::move(value));
    }
}

void ElementSequence::Remove(std::size_t index) {
    if (index == 0) {
        (m_front.empty() ? m_back : m_front).pop_front();
    } else if (index + 1 == size()) {
        (m_back.empty() ? m_front : m_back).pop_back();
    } else {
        PartAt(index + 1);
        m_front.pop_back();
    }
}

void ElementSequence::Clear() {
    m_front.clear();
    m_back.clear();
}

void ElementSequence::PartAt(std::size_t index) {
    while (m_front.size() < index) {
        m_front.push_back(std::move(m_back.front()));
        m_back.pop_front();
    }
    while (m_front.size() > index) {
        m_back.push_front(std::move(m_front.back()));
        m_front.pop_back();
    }
}

}  // namespace kalvex::operands
