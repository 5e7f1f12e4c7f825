// Fuzz target: clipboard text read into a matrix of cells. The bytes are taken
// as UTF-16LE code units, the form clipboard text arrives in.
// Seeds: fuzz/corpus/clipboard_matrix/.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "qvsysbase/QvStringUtil.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::wstring text;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    text.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
  }
  std::vector<std::vector<qvsysbase::CellValue<double>>> matrix;
  qvsysbase::QvStringUtil::BuildMatrixFromString(text, matrix);
  double value = 0.0;
  qvsysbase::QvStringUtil::ReadValueFromString(text.c_str(), value);
  return 0;
}
