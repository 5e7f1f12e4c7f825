// LbVector: a vector whose first index is a stored lower bound instead of 0,
// for tables indexed by grid rows or columns that start somewhere inside the
// grid (the rows T .. B of a selection, say).
//
//   LbVector<unsigned> heights(5, 3, 1);  // indices 5, 6 and 7, each 1
//   heights[6] = 2;
//   heights[8];                           // throws std::out_of_range
//
// Indexing is checked: below the bound it throws std::out_of_range with
// "index below low boundary", at or beyond the bound plus the size with
// "index above upper boundary".
//
// Thread-safety: thread-compatible. Intentionally copyable (a value).
#ifndef QVSYSBASE_LBVECTOR_H_
#define QVSYSBASE_LBVECTOR_H_

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace qvsysbase {

inline constexpr const char* kLbVectorBelowText = "index below low boundary";
inline constexpr const char* kLbVectorAboveText = "index above upper boundary";

template <typename T>
class LbVector {
 public:
  using value_type = T;
  using iterator = typename std::vector<T>::iterator;
  using const_iterator = typename std::vector<T>::const_iterator;

  // Empty, with bound 0.
  LbVector() = default;
  // `count` copies of `value` at indices lowBound, lowBound + 1, ...
  LbVector(unsigned lowBound, std::size_t count, const T& value = T());

  // Element `index - GetLowBound()`; throws std::out_of_range outside.
  T& operator[](unsigned index);
  const T& operator[](unsigned index) const;

  unsigned GetLowBound() const { return m_nLowBound; }
  std::size_t size() const { return m_vecData.size(); }
  bool empty() const { return m_vecData.empty(); }

  // Appends at index GetLowBound() + size().
  void push_back(const T& value) { m_vecData.push_back(value); }
  // Replaces the contents and the bound, as the constructor makes them.
  void assign(unsigned lowBound, std::size_t count, const T& value = T());

  // The elements in index order.
  iterator begin() { return m_vecData.begin(); }
  iterator end() { return m_vecData.end(); }
  const_iterator begin() const { return m_vecData.begin(); }
  const_iterator end() const { return m_vecData.end(); }

  bool operator==(const LbVector&) const = default;

  // ---------------------------------------------------------------------------
  // Implementation details follow.
 private:
  std::size_t Offset(unsigned index) const;

  unsigned m_nLowBound = 0;
  std::vector<T> m_vecData;
};

template <typename T>
LbVector<T>::LbVector(unsigned lowBound, std::size_t count, const T& value)
    : m_nLowBound(lowBound), m_vecData(count, value) {}

template <typename T>
void LbVector<T>::assign(unsigned lowBound, std::size_t count, const T& value) {
  m_vecData.assign(count, value);
  m_nLowBound = lowBound;
}

// The offset is computed before it is compared, so a bound near the top of the
// unsigned range cannot wrap the upper check.
template <typename T>
std::size_t LbVector<T>::Offset(unsigned index) const {
  if (index < m_nLowBound) throw std::out_of_range(kLbVectorBelowText);
  const std::size_t offset = index - m_nLowBound;
  if (offset >= m_vecData.size()) throw std::out_of_range(kLbVectorAboveText);
  return offset;
}

template <typename T>
T& LbVector<T>::operator[](unsigned index) {
  return m_vecData[Offset(index)];
}

template <typename T>
const T& LbVector<T>::operator[](unsigned index) const {
  return m_vecData[Offset(index)];
}

}  // namespace qvsysbase

#endif  // QVSYSBASE_LBVECTOR_H_
