// The values of a list in their order. They lie in two rows that part where a value was last put in
// or taken out, so a change moves no more values than lie between it and the one before it, and
// none at the two ends: a walk that takes out some, a queue and a stack cost the same for each
// element however many there are.
#pragma once

#include <array>
#include <cstddef>
#include <deque>

#include "value/Value.h"

namespace kalvex::operands {

class ElementSequence {
  public:
    using Row = std::deque<value::CVal>;

    class Iterator {
      public:
        using value_type = value::CVal;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        Iterator(const ElementSequence& elements, std::size_t index)
            : m_elements(&elements), m_index(index) {}

        const value::CVal& operator*() const { return (*m_elements)[m_index]; }
        Iterator& operator++() {
            ++m_index;
            return *this;
        }
        Iterator operator++(int) { return {*m_elements, m_index++}; }
        bool operator==(const Iterator& other) const { return m_index == other.m_index; }

      private:
        const ElementSequence* m_elements = nullptr;
        std::size_t m_index = 0;
    };

    std::size_t size() const { return m_front.size() + m_back.size(); }
    bool empty() const { return m_front.empty() && m_back.empty(); }
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }
    // The index is below the size; the reference lasts until the next change.
    const value::CVal& operator[](std::size_t index) const {
        return index < m_front.size() ? m_front[index] : m_back[index - m_front.size()];
    }
    value::CVal& operator[](std::size_t index) {
        return index < m_front.size() ? m_front[index] : m_back[index - m_front.size()];
    }
    const value::CVal& front() const { return (*this)[0]; }
    const value::CVal& back() const { return (*this)[size() - 1]; }
    // One behind the other, for what goes through all elements and need not ask where each lies.
    std::array<const Row*, 2> Rows() const { return {&m_front, &m_back}; }

    void Append(const value::CVal& value) { m_back.push_back(value); }
    void Insert(std::size_t index, value::CVal value);  // the index is at most the size
    void Remove(std::size_t index);
    void Clear();

  private:
    void PartAt(std::size_t index);

    Row m_front;
    Row m_back;
};

}  // namespace kalvex::operands
