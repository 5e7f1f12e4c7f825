// Fuzz target: arbitrary bytes read as a stream holding a nested node and a
// record to skip (StreamFuzzObjects.h). Seeds: fuzz/corpus/load_stream/.
#include <cstddef>
#include <cstdint>
#include <string>

#include "StreamFuzzObjects.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qvfuzz::ReadUntrusted(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
