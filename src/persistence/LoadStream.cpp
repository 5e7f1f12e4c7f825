// The stream reader. The byte format is described in StreamFormat.h.
//
// The whole stream is held in memory (a file is read in once, after its header
// was accepted), so every length and end offset can be checked against what is
// really left before it is trusted. Failures never throw: the stream goes bad
// and later reads yield zeros. The one exception is the contract that a value lies inside the record
// being read, which is the object's promise, not the data's.
#include "qvsysbase/LoadStream.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "persistence/StreamFile.h"
#include "persistence/StreamFormat.h"
#include "qvsysbase/StreamObject.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("LoadStream", "$Revision: #1 $")

namespace qvsysbase {
namespace {

namespace fmt = streamformat;

constexpr const char* kNotFound = "stream wasn't found...";
constexpr const char* kNonOrvel = "non ORVEL stream";

// The stream's bytes and read position. `fail` is the stream's failed state:
// once set, nothing more is read.
struct InputStream {
  std::string data;
  std::size_t pos = 0;
  bool fail = false;
};

// What the first bytes of a stream say.
struct Header {
  int version = ORVEL_REJECTED;
  unsigned char major = 0;
  unsigned char minor = 0;
};

Header ClassifyHeader(const std::string& bytes) {
  if (bytes.size() < fmt::kHeaderSize) return {};
  const char* h = bytes.data();
  const auto tagged = [h](int version) {
    return Header{version, static_cast<unsigned char>(h[3]), static_cast<unsigned char>(h[4])};
  };
  if (std::memcmp(h, fmt::kTagOrv, 3) == 0) return tagged(ORVEL_TAGGED);
  if (std::memcmp(h, fmt::kOldestMark, fmt::kHeaderSize) == 0) return {ORVEL_OLDEST, 1, 1};
  if (std::memcmp(h, fmt::kLegacyMark, fmt::kHeaderSize) == 0) return {ORVEL_LEGACY, 1, 1};
  if (std::memcmp(h, fmt::kTagO93, 3) == 0) return tagged(ORVEL_93);
  return {};
}

// UTF-8 spelling of a wide path, for the narrow file API.
std::string NarrowPath(const wchar_t* path) {
  std::string out;
  for (; *path != 0; ++path) {
    auto c = static_cast<std::uint32_t>(*path);
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (c >> 12)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | ((c >> 18) & 0x07)));
      out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return out;
}

}  // namespace

class LoadStreamImpl {
 public:
  explicit LoadStreamImpl(LoadStream* owner) : m_pOwner(owner) {}
  ~LoadStreamImpl() { Close(); }
  LoadStreamImpl(const LoadStreamImpl&) = delete;
  LoadStreamImpl& operator=(const LoadStreamImpl&) = delete;

  void OpenFile(const char* path);
  void OpenMemory(const std::string& data);
  bool HoldsStream() const { return m_pIn != nullptr; }
  void Close() {
    delete m_pIn;
    m_pIn = nullptr;
  }

  int Version() const { return m_nStreamVer; }
  unsigned char Major() const { return m_ucMajor; }
  unsigned char Minor() const { return m_ucMinor; }
  bool Good() const { return m_pIn != nullptr && !m_pIn->fail; }
  void Fail() {
    if (m_pIn != nullptr) m_pIn->fail = true;
  }

  // A plain value of n bytes: zeros from a failed stream, and in a
  // current-format stream never reaching the record's close marker.
  void ReadValue(void* dest, std::size_t n) {
    if (!Good()) [[unlikely]] {
      std::memset(dest, 0, n);
      return;
    }
    if (m_nStreamVer == ORVEL_93) CheckInsideRecord(n);
    ReadRaw(dest, n);
  }

  template <typename U>
  U ReadLE() {
    unsigned char bytes[sizeof(U)];
    ReadValue(bytes, sizeof(U));
    return fmt::DecodeLE<U>(bytes);
  }

  void ReadString(std::string& value);
  void ReadWideString(std::wstring& value);
  void ReadObject(StreamObjectProt& object);
  void PutBack(char c);
  bool ReadBody(std::string& body);

 private:
  class RecordScope;

  Header AcceptHeader(const std::string& first);
  void Take(std::unique_ptr<InputStream> in, const Header& header);
  void CheckInsideRecord(std::size_t size) const {
    const auto posCur = static_cast<std::streamoff>(m_pIn->pos);
    QV_ASSERT(((unsigned long)(std::streamoff)posCur) + size < ((unsigned long)m_EndPos));
  }
  // Where reading must stop: before the close marker of the record being read
  // in a current-format stream, else the end of the data.
  std::size_t Limit() const {
    return m_EndPos > 0 ? static_cast<std::size_t>(m_EndPos) - 1 : m_pIn->data.size();
  }
  std::size_t Remaining() const { return Limit() - std::min(m_pIn->pos, Limit()); }
  // Reads n bytes unchecked against the record; a short read fails the stream
  // and leaves zeros.
  bool ReadRaw(void* dest, std::size_t n) {
    if (n > m_pIn->data.size() - m_pIn->pos) [[unlikely]] {
      std::memset(dest, 0, n);
      m_pIn->pos = m_pIn->data.size();
      m_pIn->fail = true;
      return false;
    }
    std::memcpy(dest, m_pIn->data.data() + m_pIn->pos, n);
    m_pIn->pos += n;
    return true;
  }
  // A read of record framing, bounded by the enclosing record.
  bool ReadFrame(void* dest, std::size_t n) {
    if (!Good() || n > Remaining()) return false;
    return ReadRaw(dest, n);
  }
  bool ReadFrameU32(std::uint32_t& value) {
    char bytes[4];
    if (!ReadFrame(bytes, 4)) return false;
    value = fmt::DecodeU32(bytes);
    return true;
  }
  bool ReadClassHeader(StreamObjectProt& object, std::int32_t& major, std::int32_t& minor);
  bool EnterRecord();
  void SkipToEnd();

  int m_nStreamVer = ORVEL_REJECTED;
  InputStream* m_pIn = nullptr;  // owned
  unsigned char m_ucMajor = 0;
  unsigned char m_ucMinor = 0;
  std::streamoff m_EndPos = 0;  // end offset of the record being read; 0 outside
  int m_nDepth = 0;             // records being read, outermost included
  LoadStream* m_pOwner;         // not owned: the handle that owns this
};

// Restores, however the record's reading ends, what reading it changed: the
// enclosing record's end, the nesting depth and the object's own versions.
class LoadStreamImpl::RecordScope {
 public:
  RecordScope(LoadStreamImpl& impl, StreamObjectProt& object, int major, int minor)
      : m_impl(impl), m_object(object), m_savedEnd(impl.m_EndPos), m_major(major), m_minor(minor) {
    ++m_impl.m_nDepth;
  }
  ~RecordScope() {
    --m_impl.m_nDepth;
    m_impl.m_EndPos = m_savedEnd;
    m_object.SetVersionMajor(m_major);
    m_object.SetVersionMinor(m_minor);
  }
  RecordScope(const RecordScope&) = delete;
  RecordScope& operator=(const RecordScope&) = delete;

 private:
  LoadStreamImpl& m_impl;
  StreamObjectProt& m_object;
  std::streamoff m_savedEnd;
  int m_major;
  int m_minor;
};

// The file's header is read and judged before its body: a file that is no
// stream costs five bytes, however long it is.
void LoadStreamImpl::OpenFile(const char* path) {
  streamfile::InputFile file(path);
  auto in = std::make_unique<InputStream>();
  if (!file.IsOpen() || !file.Read(in->data, fmt::kHeaderSize)) throw std::domain_error(kNotFound);
  const Header header = AcceptHeader(in->data);
  if (!file.ReadRest(in->data)) throw std::domain_error(kNotFound);
  Take(std::move(in), header);
}

void LoadStreamImpl::OpenMemory(const std::string& data) {
  const Header header = AcceptHeader(data);
  auto in = std::make_unique<InputStream>();
  in->data = data;
  Take(std::move(in), header);
}

// Throws "non ORVEL stream" for a header of no known form.
Header LoadStreamImpl::AcceptHeader(const std::string& first) {
  const Header header = ClassifyHeader(first);
  if (header.version == ORVEL_REJECTED) {
    m_nStreamVer = ORVEL_REJECTED;
    throw std::domain_error(kNonOrvel);
  }
  return header;
}

void LoadStreamImpl::Take(std::unique_ptr<InputStream> in, const Header& header) {
  m_nStreamVer = header.version;
  m_ucMajor = header.major;
  m_ucMinor = header.minor;
  m_EndPos = 0;
  m_pIn = in.release();
  m_pIn->pos = fmt::kHeaderSize;
}

void LoadStreamImpl::ReadString(std::string& value) {
  const std::uint32_t length = ReadLE<std::uint32_t>();
  value.clear();
  if (!Good()) return;
  // Checked before allocating: a hostile length must not reserve gigabytes.
  if (length > Remaining()) {
    Fail();
    return;
  }
  value.assign(m_pIn->data, m_pIn->pos, length);
  m_pIn->pos += length;
}

void LoadStreamImpl::ReadWideString(std::wstring& value) {
  const std::uint32_t units = ReadLE<std::uint32_t>() / 2;
  value.clear();
  if (!Good()) return;
  if (std::size_t{units} * 2 > Remaining()) {
    Fail();
    return;
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(m_pIn->data.data() + m_pIn->pos);
  m_pIn->pos += std::size_t{units} * 2;
  fmt::AppendFromUtf16LE(bytes, units, value);
}

bool LoadStreamImpl::ReadClassHeader(StreamObjectProt& object, std::int32_t& major,
                                     std::int32_t& minor) {
  if (!Good() || m_nDepth >= fmt::kMaxNestingDepth) return false;
  char marker = 0;
  if (!ReadFrame(&marker, 1) || marker != fmt::kOpenMarker) return false;
  std::uint32_t length = 0;
  if (!ReadFrameU32(length) || length == 0 || length >= fmt::kMaxClassNameSize) return false;
  char name[fmt::kMaxClassNameSize + 1];  // terminated below, for ProcessInvalidClassName
  if (!ReadFrame(name, length)) return false;
  name[length] = '\0';
  if (object.getClassName() != std::string_view(name, length)) {
    bool accept = false;
    object.ProcessInvalidClassName(name, accept);
    if (!accept) return false;
  }
  std::uint32_t versions[2] = {};
  if (!ReadFrameU32(versions[0]) || !ReadFrameU32(versions[1])) return false;
  major = static_cast<std::int32_t>(versions[0]);
  minor = static_cast<std::int32_t>(versions[1]);
  return true;
}

// Reads and checks the end offset of a current-format record and makes it the
// bound of the reads that follow.
bool LoadStreamImpl::EnterRecord() {
  std::uint32_t raw = 0;
  if (!ReadFrameU32(raw)) return false;
  const std::int64_t end = static_cast<std::int32_t>(raw);  // widened with its sign
  const auto first = static_cast<std::int64_t>(m_pIn->pos);
  // The record must hold at least its close marker, end inside the enclosing
  // record (or the stream), and the byte before its end must be that marker.
  if (end <= first || end > static_cast<std::int64_t>(Limit()) ||
      m_pIn->data[static_cast<std::size_t>(end) - 1] != fmt::kCloseMarker) {
    return false;
  }
  m_EndPos = end;
  return true;
}

void LoadStreamImpl::SkipToEnd() {
  if (!Good()) return;
  if (m_nStreamVer == ORVEL_93) {
    m_pIn->pos = static_cast<std::size_t>(m_EndPos);
    return;
  }
  while (m_pIn->pos < m_pIn->data.size()) {
    if (m_pIn->data[m_pIn->pos++] == fmt::kCloseMarker) return;
  }
  Fail();  // no close marker before the end of the data
}

void LoadStreamImpl::ReadObject(StreamObjectProt& object) {
  const int ownMajor = object.GetVersionMajor();
  const int ownMinor = object.GetVersionMinor();
  std::int32_t major = 0;
  std::int32_t minor = 0;
  if (!ReadClassHeader(object, major, minor)) {
    Fail();
    return;
  }
  object.SetVersionMajor(major);
  object.SetVersionMinor(minor);
  RecordScope scope(*this, object, ownMajor, ownMinor);
  if (m_nStreamVer == ORVEL_93 && !EnterRecord()) {
    Fail();
    return;
  }
  const bool accepted = object.Load(*m_pOwner);
  if (accepted || m_nStreamVer == ORVEL_93) SkipToEnd();
  if (!accepted) Fail();
}

void LoadStreamImpl::PutBack(char c) {
  if (!Good()) return;
  if (m_pIn->pos == 0 || m_pIn->data[m_pIn->pos - 1] != c) {
    Fail();  // only the byte just read can be given back
    return;
  }
  --m_pIn->pos;
}

// The body of the record being read: everything up to its close marker.
bool LoadStreamImpl::ReadBody(std::string& body) {
  if (!Good()) return false;
  const std::size_t n = Remaining();
  body.assign(m_pIn->data, m_pIn->pos, n);
  m_pIn->pos += n;
  return true;
}

namespace {

// Reads a record of any class and keeps its body.
class BodyCollector final : public StreamObject2Skip {
 public:
  explicit BodyCollector(LoadStreamImpl& impl) : m_impl(impl) {}
  bool Load(LoadStream&) override { return m_impl.ReadBody(m_body); }
  std::string getClassName() const override { return "qvsysbase::StreamObject2Skip"; }
  std::string& Body() { return m_body; }

 private:
  LoadStreamImpl& m_impl;
  std::string m_body;
};

}  // namespace

LoadStream::LoadStream() : m_pImpl(new LoadStreamImpl(this)) {}
LoadStream::~LoadStream() { delete m_pImpl; }

void LoadStream::InitFileStream(const char* path) {
  if (m_pImpl->HoldsStream()) throw std::logic_error(fmt::kOpenExisting);
  m_pImpl->OpenFile(path);
}
void LoadStream::InitFileStream(const wchar_t* path) {
  if (path == nullptr) {
    InitFileStream(static_cast<const char*>(nullptr));
    return;
  }
  InitFileStream(NarrowPath(path).c_str());
}
void LoadStream::InitMemStream(const std::string& data) {
  if (m_pImpl->HoldsStream()) throw std::logic_error(fmt::kOpenExisting);
  m_pImpl->OpenMemory(data);
}
void LoadStream::CloseStream() { m_pImpl->Close(); }

int LoadStream::GetStreamVersion() const { return m_pImpl->Version(); }
unsigned char LoadStream::GetStreamVerionMajor() const { return m_pImpl->Major(); }
unsigned char LoadStream::GetStreamVerionMinor() const { return m_pImpl->Minor(); }
bool LoadStream::good() const { return m_pImpl->Good(); }

LoadStream& LoadStream::operator>>(bool& value) {
  value = m_pImpl->ReadLE<std::uint32_t>() != 0;
  return *this;
}
LoadStream& LoadStream::operator>>(char& value) {
  m_pImpl->ReadValue(&value, 1);
  return *this;
}
LoadStream& LoadStream::operator>>(wchar_t& value) {
  value = static_cast<wchar_t>(m_pImpl->ReadLE<std::uint16_t>());
  return *this;
}
LoadStream& LoadStream::operator>>(short& value) {
  value = static_cast<short>(m_pImpl->ReadLE<std::uint16_t>());
  return *this;
}
LoadStream& LoadStream::operator>>(unsigned short& value) {
  value = m_pImpl->ReadLE<std::uint16_t>();
  return *this;
}
LoadStream& LoadStream::operator>>(int& value) {
  value = static_cast<int>(m_pImpl->ReadLE<std::uint32_t>());
  return *this;
}
LoadStream& LoadStream::operator>>(unsigned& value) {
  value = m_pImpl->ReadLE<std::uint32_t>();
  return *this;
}
LoadStream& LoadStream::operator>>(long& value) {
  value = static_cast<std::int32_t>(m_pImpl->ReadLE<std::uint32_t>());
  return *this;
}
LoadStream& LoadStream::operator>>(unsigned long& value) {
  value = m_pImpl->ReadLE<std::uint32_t>();
  return *this;
}
LoadStream& LoadStream::operator>>(float& value) {
  value = std::bit_cast<float>(m_pImpl->ReadLE<std::uint32_t>());
  return *this;
}
LoadStream& LoadStream::operator>>(double& value) {
  value = std::bit_cast<double>(m_pImpl->ReadLE<std::uint64_t>());
  return *this;
}
LoadStream& LoadStream::operator>>(long double& value) {
  unsigned char bytes[fmt::kExtendedSize];
  m_pImpl->ReadValue(bytes, fmt::kExtendedSize);
  value = fmt::DecodeExtended(bytes);
  return *this;
}
LoadStream& LoadStream::operator>>(std::string& value) {
  m_pImpl->ReadString(value);
  return *this;
}
LoadStream& LoadStream::operator>>(std::wstring& value) {
  m_pImpl->ReadWideString(value);
  return *this;
}
LoadStream& LoadStream::operator>>(StreamObjectProt& object) {
  m_pImpl->ReadObject(object);
  return *this;
}

void LoadStream::PutBack(char c) {
  QV_ASSERT(GetStreamVersion() < ORVEL_93);
  m_pImpl->PutBack(c);
}
bool LoadStream::IsCloseMarker(char c) const {
  QV_ASSERT(GetStreamVersion() < ORVEL_93);
  return c == fmt::kCloseMarker;
}

bool LoadStream::CopyCurrentStreamedObject(std::string& s) {
  if (GetStreamVersion() != ORVEL_93) return false;
  BodyCollector collector(*m_pImpl);
  m_pImpl->ReadObject(collector);
  if (!good()) return false;
  s.swap(collector.Body());
  return true;
}

}  // namespace qvsysbase
