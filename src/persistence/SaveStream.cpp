// The stream writer. The byte format is described in StreamFormat.h.
//
// Output goes through one non-virtual byte sink: for a memory stream its buffer
// is the whole stream; for a file it is a write buffer flushed in large blocks,
// so a value costs one bounds check and a small copy in either case.
#include "qvsysbase/SaveStream.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>

#include "persistence/StreamFormat.h"
#include "qvsysbase/StreamObject.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("SaveStream", "$Revision: #1 $")

namespace qvsysbase {
namespace {

namespace fmt = streamformat;

constexpr const char* kFileCreationFailed = "stream creation has failed...";
constexpr const char* kMemCreationFailed = "stream creation was failed...";
constexpr const char* kBufferNotFound = "The stream buffer wasn't found";
constexpr const char* kOutOfRange = "value doesn't fit in 32 bits";
constexpr const char* kTooDeep = "object records nest too deep";

// A file is written in blocks of this size: large enough that the system call
// per block is noise, small enough to stay in cache.
constexpr std::size_t kFileBlock = 64 * 1024;
constexpr std::size_t kInitialMemCapacity = 256;

enum Medium : int { MEDIUM_NONE = 0, MEDIUM_FILE = 1, MEDIUM_MEMORY = 2 };

}  // namespace

// The byte sink. Positions count from the first byte of the stream; for a file,
// bytes before m_nFlushed are on disk and the rest are in the buffer.
class OutputStream {
 public:
  // `file` is owned. Its own buffering is switched off: this class already
  // writes in blocks, and a block that fails must show when it is written.
  explicit OutputStream(std::FILE* file) : m_pFile(file) {
    if (m_pFile != nullptr) std::setvbuf(m_pFile, nullptr, _IONBF, 0);
  }
  ~OutputStream() { Close(); }
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  void Write(const void* bytes, std::size_t n) {
    if (m_nSize + n > m_nCapacity) [[unlikely]] {
      if (!MakeRoom(n)) return;
    }
    std::memcpy(m_pData.get() + m_nSize, bytes, n);
    m_nSize += n;
  }
  std::uint64_t Position() const { return m_nFlushed + m_nSize; }
  // Overwrites 4 bytes at an earlier position (the end-offset placeholder).
  void Patch(std::uint64_t pos, const unsigned char bytes[4]) {
    if (pos >= m_nFlushed && pos + 4 <= Position()) {
      std::memcpy(m_pData.get() + (pos - m_nFlushed), bytes, 4);
      return;
    }
    if (m_pFile == nullptr || !Flush()) return;
    const bool ok = std::fseek(m_pFile, static_cast<long>(pos), SEEK_SET) == 0 &&
                    std::fwrite(bytes, 1, 4, m_pFile) == 4 && std::fseek(m_pFile, 0, SEEK_END) == 0;
    if (!ok) m_bBad = true;
  }
  const char* Data() const { return m_pData.get(); }
  std::size_t Size() const { return m_nSize; }
  bool Good() const { return !m_bBad; }
  // Writes what is buffered and closes the file; false when any write failed.
  // Afterwards the object is only to be deleted.
  bool Close() {
    if (m_pFile != nullptr) {
      Flush();
      if (std::fclose(m_pFile) != 0) m_bBad = true;
      m_pFile = nullptr;
    }
    return !m_bBad;
  }

 private:
  bool MakeRoom(std::size_t n) {
    if (m_pFile != nullptr && m_nSize > 0 && !Flush()) return false;
    if (m_nSize + n <= m_nCapacity) return true;
    std::size_t capacity = m_nCapacity == 0
                               ? (m_pFile != nullptr ? kFileBlock : kInitialMemCapacity)
                               : m_nCapacity * 2;
    while (capacity < m_nSize + n) capacity *= 2;
    // realloc rather than new + copy: a large block is moved by remapping its
    // pages, so growth neither copies the stream nor touches its pages again.
    char* data = static_cast<char*>(std::realloc(m_pData.get(), capacity));
    if (data == nullptr) {
      m_bBad = true;
      return false;
    }
    (void)m_pData.release();
    m_pData.reset(data);
    m_nCapacity = capacity;
    return true;
  }
  bool Flush() {
    if (m_pFile == nullptr || m_nSize == 0) return !m_bBad;
    if (std::fwrite(m_pData.get(), 1, m_nSize, m_pFile) != m_nSize) m_bBad = true;
    m_nFlushed += m_nSize;
    m_nSize = 0;
    return !m_bBad;
  }

  std::FILE* m_pFile;  // owned; null for a memory stream
  struct FreeBytes {
    void operator()(char* p) const { std::free(p); }
  };
  std::unique_ptr<char, FreeBytes> m_pData;
  std::size_t m_nSize = 0;
  std::size_t m_nCapacity = 0;
  std::uint64_t m_nFlushed = 0;
  bool m_bBad = false;
};

class SaveStreamImpl {
 public:
  static constexpr int UNDEFINED = 0;

  SaveStreamImpl(unsigned char major, unsigned char minor, SaveStream* owner)
      : m_ucMajor(major), m_ucMinor(minor), m_pOwner(owner) {}
  ~SaveStreamImpl() { Close(); }
  SaveStreamImpl(const SaveStreamImpl&) = delete;
  SaveStreamImpl& operator=(const SaveStreamImpl&) = delete;

  void OpenFile(const char* path, STREAM_VER_SAVE ver) {
    if (m_pOut != nullptr) throw std::logic_error(fmt::kOpenExisting);
    // Checked before anything is created: a closed stream must stay closed,
    // and its file untouched.
    QV_ASSERT(m_StreamVer == UNDEFINED);
    m_nMedium = MEDIUM_FILE;
    std::FILE* file = path != nullptr ? std::fopen(path, "wb") : nullptr;
    if (file == nullptr) throw std::domain_error(kFileCreationFailed);
    m_pOut = new (std::nothrow) OutputStream(file);
    if (m_pOut == nullptr) {
      std::fclose(file);
      throw std::domain_error(kFileCreationFailed);
    }
    WriteHeader(ver == STREAM_VER_SAVE_LEGACY ? fmt::kWriteLegacy : fmt::kWriteCurrent);
  }

  void OpenMemory(STREAM_VER_SAVE ver) {
    if (m_pOut != nullptr) throw std::logic_error(fmt::kOpenExisting);
    // Checked before anything is created: a closed stream must stay closed,
    // and its file untouched.
    QV_ASSERT(m_StreamVer == UNDEFINED);
    m_nMedium = MEDIUM_MEMORY;
    m_pOut = new (std::nothrow) OutputStream(nullptr);
    if (m_pOut == nullptr) throw std::domain_error(kMemCreationFailed);
    WriteHeader(ver == STREAM_VER_SAVE_LEGACY ? fmt::kWriteLegacy : fmt::kWriteCurrent);
  }

  const char* Buffer(int& length) const {
    if (m_nMedium != MEDIUM_MEMORY) return nullptr;
    if (m_pOut == nullptr) throw std::domain_error(kBufferNotFound);
    length = static_cast<int>(m_pOut->Size());
    return m_pOut->Data();
  }

  void Close() {
    if (m_pOut != nullptr && !m_pOut->Close()) m_bFailed = true;
    delete m_pOut;
    m_pOut = nullptr;
  }

  bool Good() const {
    return m_StreamVer != UNDEFINED && !m_bFailed && (m_pOut == nullptr || m_pOut->Good());
  }

  void Write(const void* bytes, std::size_t n) {
    if (m_pOut != nullptr) [[likely]] {
      m_pOut->Write(bytes, n);
    } else {
      m_bFailed = true;  // nothing open: the bytes are lost
    }
  }

  template <typename U>
  void WriteLE(U value) {
    unsigned char bytes[sizeof(U)];
    fmt::EncodeLE<U>(value, bytes);
    Write(bytes, sizeof(U));
  }

  void WriteLength(std::size_t n) {
    if (n > std::numeric_limits<std::uint32_t>::max()) throw std::out_of_range(kOutOfRange);
    WriteLE<std::uint32_t>(static_cast<std::uint32_t>(n));
  }

  void WriteObject(const StreamObjectProt& object);

 private:
  void WriteHeader(int version);
  void WriteRecord(const StreamObjectProt& object);

  int m_StreamVer = UNDEFINED;
  int m_nMedium = MEDIUM_NONE;
  OutputStream* m_pOut = nullptr;  // owned
  bool m_bFailed = false;          // a write was lost or a record left unfinished
  int m_nDepth = 0;                // records being written, outermost included
  unsigned char m_ucMajor;
  unsigned char m_ucMinor;
  SaveStream* m_pOwner;  // not owned: the handle that owns this
};

void SaveStreamImpl::WriteHeader(int version) {
  m_StreamVer = version;
  switch (version) {
    case fmt::kWriteLegacy:
      Write(fmt::kLegacyMark, fmt::kHeaderSize);
      break;
    case fmt::kWriteCurrent: {
      const char header[fmt::kHeaderSize] = {fmt::kTagO93[0],
                                             fmt::kTagO93[1],
                                             fmt::kTagO93[2],
                                             static_cast<char>(m_ucMajor),
                                             static_cast<char>(m_ucMinor)};
      Write(header, fmt::kHeaderSize);
      break;
    }
    default:
      QV_ASSERT(false);
  }
}

// Counts the record as being written for as long as it is. A record whose
// writing ends by an exception stays unfinished in the stream, which is then no
// longer good.
void SaveStreamImpl::WriteObject(const StreamObjectProt& object) {
  // Refused before its first byte, so that what is written can be read back.
  if (m_nDepth >= MAX_NESTING_DEPTH) {
    m_bFailed = true;  // the records around it stay unfinished
    throw std::logic_error(kTooDeep);
  }
  ++m_nDepth;
  try {
    WriteRecord(object);
  } catch (...) {
    --m_nDepth;
    m_bFailed = true;
    throw;
  }
  --m_nDepth;
}

void SaveStreamImpl::WriteRecord(const StreamObjectProt& object) {
  const std::string name = object.getClassName();
  Write(&fmt::kOpenMarker, 1);
  const std::size_t length = name.size();
  QV_ASSERT(length < MAX_CLASSNAME_SIZE);
  WriteLE<std::uint32_t>(static_cast<std::uint32_t>(length));
  Write(name.data(), length);
  WriteLE<std::uint32_t>(static_cast<std::uint32_t>(object.GetVersionMajor()));
  WriteLE<std::uint32_t>(static_cast<std::uint32_t>(object.GetVersionMinor()));
  const bool withEnd = m_StreamVer == fmt::kWriteCurrent && m_pOut != nullptr;
  const std::uint64_t placeholderPos = withEnd ? m_pOut->Position() : 0;
  if (withEnd) WriteLE<std::uint32_t>(static_cast<std::uint32_t>(placeholderPos));
  object.Save(*m_pOwner);
  Write(&fmt::kCloseMarker, 1);
  // The stream may have been closed by the object's Save; then there is
  // nothing left to patch.
  if (withEnd && m_pOut != nullptr) {
    unsigned char end[4];
    fmt::EncodeLE<std::uint32_t>(static_cast<std::uint32_t>(m_pOut->Position()), end);
    m_pOut->Patch(placeholderPos, end);
  }
}

SaveStream::SaveStream() : SaveStream(1, 1) {}
SaveStream::SaveStream(unsigned char major, unsigned char minor)
    : m_pImpl(new SaveStreamImpl(major, minor, this)) {}
SaveStream::~SaveStream() { delete m_pImpl; }

void SaveStream::InitFileStream(const char* path) { InitFileStream(path, STREAM_VER_SAVE_CURRENT); }
void SaveStream::InitFileStream(const char* path, STREAM_VER_SAVE ver) {
  m_pImpl->OpenFile(path, ver);
}
void SaveStream::InitMemStream() { InitMemStream(STREAM_VER_SAVE_CURRENT); }
void SaveStream::InitMemStream(STREAM_VER_SAVE ver) { m_pImpl->OpenMemory(ver); }
const char* SaveStream::GetStreamBuffer(int& length) { return m_pImpl->Buffer(length); }
void SaveStream::CloseStream() { m_pImpl->Close(); }
bool SaveStream::good() const { return m_pImpl->Good(); }

SaveStream& SaveStream::operator<<(bool value) {
  m_pImpl->WriteLE<std::uint32_t>(value ? 1U : 0U);
  return *this;
}
SaveStream& SaveStream::operator<<(char value) {
  m_pImpl->Write(&value, 1);
  return *this;
}
SaveStream& SaveStream::operator<<(wchar_t value) {
  m_pImpl->WriteLE<std::uint16_t>(fmt::ToSingleUnit(value));
  return *this;
}
SaveStream& SaveStream::operator<<(short value) {
  m_pImpl->WriteLE<std::uint16_t>(static_cast<std::uint16_t>(value));
  return *this;
}
SaveStream& SaveStream::operator<<(unsigned short value) {
  m_pImpl->WriteLE<std::uint16_t>(value);
  return *this;
}
SaveStream& SaveStream::operator<<(int value) {
  m_pImpl->WriteLE<std::uint32_t>(static_cast<std::uint32_t>(value));
  return *this;
}
SaveStream& SaveStream::operator<<(unsigned value) {
  m_pImpl->WriteLE<std::uint32_t>(value);
  return *this;
}
SaveStream& SaveStream::operator<<(long value) {
  if (value < std::numeric_limits<std::int32_t>::min() ||
      value > std::numeric_limits<std::int32_t>::max()) {
    throw std::out_of_range(kOutOfRange);
  }
  m_pImpl->WriteLE<std::uint32_t>(static_cast<std::uint32_t>(value));
  return *this;
}
SaveStream& SaveStream::operator<<(unsigned long value) {
  if (value > std::numeric_limits<std::uint32_t>::max()) throw std::out_of_range(kOutOfRange);
  m_pImpl->WriteLE<std::uint32_t>(static_cast<std::uint32_t>(value));
  return *this;
}
SaveStream& SaveStream::operator<<(float value) {
  m_pImpl->WriteLE<std::uint32_t>(std::bit_cast<std::uint32_t>(value));
  return *this;
}
SaveStream& SaveStream::operator<<(double value) {
  m_pImpl->WriteLE<std::uint64_t>(std::bit_cast<std::uint64_t>(value));
  return *this;
}
SaveStream& SaveStream::operator<<(long double value) {
  unsigned char bytes[fmt::kExtendedSize];
  fmt::EncodeExtended(value, bytes);
  m_pImpl->Write(bytes, fmt::kExtendedSize);
  return *this;
}
SaveStream& SaveStream::operator<<(const char* value) {
  QV_ASSERT(value != nullptr);
  const std::size_t n = std::strlen(value);
  m_pImpl->WriteLength(n);
  m_pImpl->Write(value, n);
  return *this;
}
SaveStream& SaveStream::operator<<(const std::string& value) {
  m_pImpl->WriteLength(value.size());
  m_pImpl->Write(value.data(), value.size());
  return *this;
}

namespace {
// Writes the UTF-16LE units of s through a small stack buffer: no allocation per
// string.
void WriteUnits(SaveStreamImpl& impl, const wchar_t* s, std::size_t n) {
  unsigned char buffer[256];
  std::size_t used = 0;
  const auto put = [&](std::uint32_t unit) {
    if (used == sizeof(buffer)) {
      impl.Write(buffer, used);
      used = 0;
    }
    fmt::EncodeLE<std::uint16_t>(static_cast<std::uint16_t>(unit), buffer + used);
    used += 2;
  };
  for (std::size_t i = 0; i < n; ++i) {
    auto code = static_cast<std::uint32_t>(s[i]);
    if (code <= 0xFFFF) {
      put(code);
    } else if (code <= 0x10FFFF) {
      code -= 0x10000;
      put(0xD800 + (code >> 10));
      put(0xDC00 + (code & 0x3FF));
    } else {
      put(fmt::kReplacementCharacter);
    }
  }
  impl.Write(buffer, used);
}
}  // namespace

SaveStream& SaveStream::operator<<(const std::wstring& value) {
  const std::size_t units = fmt::Utf16Length(value.data(), value.size());
  m_pImpl->WriteLength(units * 2);
  WriteUnits(*m_pImpl, value.data(), value.size());
  return *this;
}
SaveStream& SaveStream::operator<<(const wchar_t* value) {
  QV_ASSERT(value != nullptr);
  const std::size_t n = std::wcslen(value);
  const std::size_t units = fmt::Utf16Length(value, n);
  // Four bytes per unit: the units themselves, then zeros standing in for the
  // memory after the string that the historical writer copied.
  const std::size_t total = units * 4;
  m_pImpl->WriteLength(total);
  WriteUnits(*m_pImpl, value, n);
  static constexpr char kZeros[64] = {};
  for (std::size_t left = total - units * 2; left > 0;) {
    const std::size_t chunk = left < sizeof(kZeros) ? left : sizeof(kZeros);
    m_pImpl->Write(kZeros, chunk);
    left -= chunk;
  }
  return *this;
}
SaveStream& SaveStream::operator<<(const StreamObjectProt& object) {
  m_pImpl->WriteObject(object);
  return *this;
}

}  // namespace qvsysbase
