// Numbers written in the user's notation: an optional sign, digits with the
// user's decimal separator, an optional exponent, no grouping. Shared by the
// number functions of the string utilities and the clipboard matrix.
#ifndef QVSYSBASE_SRC_TEXT_USERNUMBERS_H_
#define QVSYSBASE_SRC_TEXT_USERNUMBERS_H_

#include <string_view>

namespace qvsysbase::detail {

// The decimal separator of the user's default locale.
wchar_t UserDecimalSeparator();

// Reads `text` (surrounding spaces allowed) as a number with the decimal
// separator `separator`. False, with `value` unchanged, when it is not such a
// number or lies outside the range of double.
bool ReadUserNumber(std::wstring_view text, wchar_t separator, double& value);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_TEXT_USERNUMBERS_H_
