// Inspection of a persistent stream without knowing its classes: the header and,
// where records carry end offsets, the tree of object records with the first
// inconsistency found. Used by `qvsys dump` and by tests of damaged files.
//
// Top-level records are checked strictly: in the current format every byte after
// the header belongs to a record. Inside a body plain values carry no type tag,
// so nested records are found by their framing (open marker, name length and
// printable name, end offset inside the body just past a close marker); a body
// whose values happen to form such a frame shows it as a record.
//
// Streams without end offsets cannot be framed without each class's Load: the
// inspection stops after their header.
//
// Thread-safe: the functions keep no state.
#ifndef QVSYSBASE_STREAMSTRUCTURE_H_
#define QVSYSBASE_STREAMSTRUCTURE_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "qvsysbase/Export.h"

namespace qvsysbase {

struct StreamRecordInfo {
  std::uint64_t offset = 0;  // of the open marker
  std::string className;
  std::int32_t major = 0;
  std::int32_t minor = 0;
  std::uint64_t endOffset = 0;  // just past the close marker
  std::uint64_t bodySize = 0;   // between the end offset field and the close marker
  int depth = 0;                // 0 for top-level records
};

struct StreamStructure {
  int streamVersion = 3;  // as LoadStream::GetStreamVersion() reports it (3: rejected)
  std::string form;       // "O93", "ORV", "legacy", "oldest" or "unknown"
  unsigned major = 0;
  unsigned minor = 0;
  bool framed = false;                    // records carry end offsets and were walked
  std::vector<StreamRecordInfo> records;  // in stream order, parents first
  bool consistent = true;
  std::uint64_t errorOffset = 0;
  std::string error;  // the first inconsistency; empty when consistent
};

// Inspects the bytes of a whole stream.
QVSYSBASE_API StreamStructure ReadStreamStructure(const std::string& bytes);

// Writes the header line, one line per record (indented by depth) and, when the
// stream is inconsistent, "error at offset N: ..." as the last line.
QVSYSBASE_API void PrintStreamStructure(std::ostream& os, const StreamStructure& inspection);

}  // namespace qvsysbase

#endif  // QVSYSBASE_STREAMSTRUCTURE_H_
