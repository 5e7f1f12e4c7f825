// Fuzz target: arbitrary bytes inspected as a stream (`qvsys dump`'s parser),
// which frames records without knowing their classes. The inspection must
// report an inconsistency, never crash or read outside the bytes.
// Seeds: fuzz/corpus/load_stream/.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "qvsysbase/StreamStructure.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const qvsysbase::StreamStructure inspection = qvsysbase::ReadStreamStructure(bytes);
  for (const qvsysbase::StreamRecordInfo& record : inspection.records) {
    // Every record found lies inside the bytes it was found in.
    if (record.endOffset > size || record.offset >= record.endOffset) __builtin_trap();
  }
  std::ostringstream text;
  qvsysbase::PrintStreamStructure(text, inspection);
  return 0;
}
