// Fuzz target: arbitrary bytes read as a stream holding a nested node and a
// record to skip (StreamFuzzObjects.h), then the same bytes as a frozen chart's
// record. Seeds: fuzz/corpus/load_stream/.
#include <cstddef>
#include <cstdint>
#include <string>

#include "StreamFuzzObjects.h"
#include "qvsysbase/FreezableObject.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  qvfuzz::ReadUntrusted(bytes);
  qvsysbase::LoadStream in;
  try {
    in.InitMemStream(bytes);
  } catch (const std::domain_error&) {
    return 0;  // "non ORVEL stream"
  }
  qvsysbase::FreezableObject chart;
  chart.ReadFromStream(in);  // a damaged record only fails the stream
  return 0;
}
