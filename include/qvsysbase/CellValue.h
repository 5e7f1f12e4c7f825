// CellValue<T>: one cell of a table read from text (a grid pasted from the
// clipboard): the value when the cell held one, otherwise the cell's text.
//
// Thread-safety: a value type (intentionally copyable), thread-compatible.
#ifndef QVSYSBASE_CELLVALUE_H_
#define QVSYSBASE_CELLVALUE_H_

#include <string>

namespace qvsysbase {

template <class T>
struct CellValue {
  // The cell's value; T{} when m_bValid is false.
  T m_Value{};
  // True when the cell's text was read as a value.
  bool m_bValid = false;
  // The cell's text with its surrounding spaces removed; kept for valid cells too.
  std::wstring m_strText;

  bool operator==(const CellValue&) const = default;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_CELLVALUE_H_
