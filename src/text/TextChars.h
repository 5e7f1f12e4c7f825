// Characters and literals shared by the narrow and the wide implementation of
// the string utilities: every algorithm is written once, as a template over the
// string type, and spells its characters in ASCII.
#ifndef QVSYSBASE_SRC_TEXT_TEXTCHARS_H_
#define QVSYSBASE_SRC_TEXT_TEXTCHARS_H_

#include <string_view>

namespace qvsysbase::detail {

template <class S>
using CharOf = typename S::value_type;

// The character `ascii` in the character type C.
template <class C>
constexpr C Ch(char ascii) {
  return static_cast<C>(ascii);
}

// The string `ascii` in the string type S.
template <class S>
S Lit(std::string_view ascii) {
  return S(ascii.begin(), ascii.end());
}

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_TEXT_TEXTCHARS_H_
