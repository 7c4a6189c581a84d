// The values of a formula while it is evaluated. Holds the first few of them itself. Main thread.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "operands/ScriptContext.h"
#include "value/Value.h"

namespace kalvex::operands {

class FormulaStack {
  public:
    static constexpr std::size_t kCells = 1024;

    explicit FormulaStack(ScriptContext& script) : m_script(script) {}
    ~FormulaStack() { Clear(); }
    FormulaStack(const FormulaStack&) = delete;
    FormulaStack& operator=(const FormulaStack&) = delete;

    ScriptContext& Script() const { return m_script; }
    bool IsFull() const { return m_size == kCells; }

    // A full stack loses everything, the value too, with an error that is not forced.
    template <class Value>
    void Push(Value&& value) {
        if (m_size == m_room) {
            if (IsFull()) return Overflow();
            Grow();
        }
        new (At(m_size)) value::CVal(std::forward<Value>(value));
        ++m_size;
    }

    value::CVal Pop() {  // the integer 0 when nothing is left
        if (m_size == 0) return value::CVal(0);
        value::CVal* const top = At(--m_size);
        value::CVal value(std::move(*top));
        top->~CVal();
        return value;
    }

    // The same into a value.
    void PopInto(value::CVal& out) {
        if (m_size == 0) {
            out = value::CVal(0);
            return;
        }
        value::CVal* const top = At(--m_size);
        out = std::move(*top);
        top->~CVal();
    }

    // The value on top, the integer 0 pushed if there is none.
    value::CVal& Top() {
        if (m_size == 0) Push(value::CVal(0));
        return *At(m_size - 1);
    }

    void Clear() {
        while (m_size > 0) At(--m_size)->~CVal();
    }

  private:
    struct alignas(value::CVal) Cell {
        std::byte bytes[sizeof(value::CVal)];
    };
    static constexpr std::size_t kOwnCells = 8;

    value::CVal* At(std::size_t index) {
        return std::launder(reinterpret_cast<value::CVal*>(m_cells + index));
    }
    void Overflow();
    void Grow();

    ScriptContext& m_script;
    Cell* m_cells = m_own;
    std::size_t m_size = 0;
    std::size_t m_room = kOwnCells;
    std::unique_ptr<Cell[]> m_more;
    Cell m_own[kOwnCells];
};

}  // namespace kalvex::operands
