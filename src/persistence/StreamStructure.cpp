// Walks the record frames of a stream; the format is described in StreamFormat.h.
#include "qvsysbase/StreamStructure.h"

#include <cstring>
#include <optional>
#include <stdexcept>

#include "persistence/StreamFormat.h"
#include "qvsysbase/LoadStream.h"

namespace qvsysbase {
namespace {

namespace fmt = streamformat;

// What a candidate record's frame can fail on, with where.
struct FrameError {
  std::uint64_t offset;
  std::string message;
};

bool IsNameCharacter(char c) { return c > 0x20 && c < 0x7F && c != '[' && c != ']'; }

class FrameWalker {
 public:
  explicit FrameWalker(const std::string& bytes) : m_bytes(bytes) {}

  // Parses the record at `pos`, which must end by `limit`; on success appends
  // it and the records found in its body, and returns its end.
  std::optional<std::uint64_t> Parse(std::uint64_t pos, std::uint64_t limit, int depth,
                                     std::vector<StreamRecordInfo>& out, FrameError& error) {
    StreamRecordInfo info;
    info.offset = pos;
    info.depth = depth;
    if (m_bytes[pos] != fmt::kOpenMarker)
      return Fail(error, pos, "bad open marker " + HexByte(pos));
    std::uint64_t at = pos + 1;
    if (limit - at < 4) return Fail(error, at, "class-name length beyond the " + Scope(depth));
    const std::uint32_t length = fmt::DecodeU32(&m_bytes[at]);
    if (length == 0 || length >= fmt::kMaxClassNameSize) {
      return Fail(error, at, "class-name length " + std::to_string(length) + " out of range 1..99");
    }
    at += 4;
    if (limit - at < length + fmt::kVersionsSize + fmt::kEndOffsetSize) {
      return Fail(error, at, "record header beyond the " + Scope(depth));
    }
    info.className.assign(m_bytes, at, length);
    at += length;
    info.major = static_cast<std::int32_t>(fmt::DecodeU32(&m_bytes[at]));
    info.minor = static_cast<std::int32_t>(fmt::DecodeU32(&m_bytes[at + 4]));
    at += fmt::kVersionsSize;
    const std::uint64_t endField = at;
    info.endOffset = fmt::DecodeU32(&m_bytes[at]);
    at += fmt::kEndOffsetSize;
    if (info.endOffset <= at || info.endOffset > limit) {
      return Fail(error,
                  endField,
                  "end offset " + std::to_string(info.endOffset) + " out of range " +
                      std::to_string(at + 1) + ".." + std::to_string(limit));
    }
    if (m_bytes[info.endOffset - 1] != fmt::kCloseMarker) {
      return Fail(error,
                  info.endOffset - 1,
                  "no close marker before end offset " + std::to_string(info.endOffset));
    }
    info.bodySize = info.endOffset - 1 - at;
    const std::uint64_t end = info.endOffset;
    out.push_back(std::move(info));
    if (depth + 1 < fmt::kMaxNestingDepth) ScanBody(at, end - 1, depth + 1, out);
    return end;
  }

 private:
  // Nested records are found by their frame; anything else is a plain value.
  void ScanBody(std::uint64_t pos, std::uint64_t end, int depth,
                std::vector<StreamRecordInfo>& out) {
    while (pos < end) {
      if (m_bytes[pos] == fmt::kOpenMarker && LooksLikeName(pos, end)) {
        std::vector<StreamRecordInfo> found;
        FrameError ignored;
        if (auto next = Parse(pos, end, depth, found, ignored)) {
          out.insert(out.end(), found.begin(), found.end());
          pos = *next;
          continue;
        }
      }
      ++pos;
    }
  }
  bool LooksLikeName(std::uint64_t pos, std::uint64_t end) const {
    if (end - pos < fmt::kRecordLead) return false;
    const std::uint32_t length = fmt::DecodeU32(&m_bytes[pos + 1]);
    if (length == 0 || length >= fmt::kMaxClassNameSize || end - pos - fmt::kRecordLead < length) {
      return false;
    }
    for (std::uint32_t i = 0; i < length; ++i) {
      if (!IsNameCharacter(m_bytes[pos + fmt::kRecordLead + i])) return false;
    }
    return true;
  }
  static std::nullopt_t Fail(FrameError& error, std::uint64_t offset, std::string message) {
    error = {offset, std::move(message)};
    return std::nullopt;
  }
  std::string HexByte(std::uint64_t pos) const {
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto c = static_cast<unsigned char>(m_bytes[pos]);
    return std::string("0x") + kDigits[c >> 4] + kDigits[c & 15];
  }
  static std::string Scope(int depth) { return depth == 0 ? "stream" : "enclosing record"; }

  const std::string& m_bytes;
};

void ReadHeader(const std::string& bytes, StreamStructure& result) {
  // The reader decides the form; its exception marks a rejected header.
  LoadStream in;
  try {
    in.InitMemStream(bytes.substr(0, fmt::kHeaderSize));
  } catch (const std::domain_error&) {
    result.form = "unknown";
    result.consistent = false;
    result.error = "non ORVEL stream: unknown header";
    return;
  }
  static constexpr const char* kForms[] = {"ORV", "oldest", "legacy", "unknown", "O93"};
  result.streamVersion = in.GetStreamVersion();
  result.form = kForms[result.streamVersion];
  result.major = in.GetStreamVerionMajor();
  result.minor = in.GetStreamVerionMinor();
}

}  // namespace

StreamStructure ReadStreamStructure(const std::string& bytes) {
  StreamStructure result;
  ReadHeader(bytes, result);
  if (!result.consistent || result.streamVersion != ORVEL_93) return result;
  result.framed = true;
  FrameWalker walker(bytes);
  std::uint64_t pos = fmt::kHeaderSize;
  while (pos < bytes.size()) {
    FrameError error;
    const auto end = walker.Parse(pos, bytes.size(), 0, result.records, error);
    if (!end) {
      result.consistent = false;
      result.errorOffset = error.offset;
      result.error = error.message;
      break;
    }
    pos = *end;
  }
  return result;
}

void PrintStreamStructure(std::ostream& os, const StreamStructure& inspection) {
  os << "header: " << inspection.form;
  if (inspection.streamVersion != ORVEL_REJECTED) {
    os << " (stream version " << inspection.streamVersion << "), major " << inspection.major
       << ", minor " << inspection.minor;
  }
  os << '\n';
  if (inspection.consistent && !inspection.framed) {
    os << "records carry no end offsets: they cannot be framed without knowing each class\n";
  }
  for (const StreamRecordInfo& r : inspection.records) {
    os << std::string(2 * static_cast<std::size_t>(r.depth), ' ') << "record at " << r.offset
       << ": " << r.className << " version " << r.major << '.' << r.minor << ", end " << r.endOffset
       << ", body " << r.bodySize << " bytes, depth " << r.depth << '\n';
  }
  if (!inspection.consistent) {
    os << "error at offset " << inspection.errorOffset << ": " << inspection.error << '\n';
  }
}

}  // namespace qvsysbase
