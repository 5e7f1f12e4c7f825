// Reading a stream file in two steps, so that the header can decide before the
// body is read: a file whose first bytes name no stream costs five bytes of
// memory whatever its length, and the body is read only after the header was
// accepted. The memory a file takes is bounded by what it really holds, and
// never exceeds the longest stream there can be: a regular file is read up to
// the size it had when opened, a source without a size (a pipe, a device) up to
// its end, and either is refused when it holds more.
//
// This unit owns the reader's use of the operating system's file interface.
#ifndef QVSYSBASE_SRC_PERSISTENCE_STREAMFILE_H_
#define QVSYSBASE_SRC_PERSISTENCE_STREAMFILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvsysbase::streamfile {

// The longest stream: no end offset (a signed 32-bit number) reaches further.
inline constexpr std::size_t kMaxStreamSize = 0x7FFFFFFF;

// Thread-compatible. Not copyable: it owns an open file.
class InputFile {
 public:
  // Opens `path` for reading. IsOpen() is false for a null path, a missing or
  // unreadable file, and a directory.
  explicit InputFile(const char* path);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  bool IsOpen() const { return m_nFd >= 0; }

  // Appends up to n bytes to `out`, fewer at the end of the file. False on a
  // read error.
  bool Read(std::string& out, std::size_t n);
  // Appends the rest of the file to `out`: for a regular file up to the size
  // it had when opened, for any other source up to its end. False on a read
  // error, or when the file holds more than `limit` bytes in all; then at most
  // `limit` + 1 bytes were read.
  bool ReadRest(std::string& out, std::size_t limit = kMaxStreamSize);

 private:
  int m_nFd = -1;
  bool m_bSized = false;      // a regular file: its size is known
  std::uint64_t m_nSize = 0;  // when sized: the size at opening
  std::uint64_t m_nRead = 0;  // bytes read so far
};

}  // namespace qvsysbase::streamfile

#endif  // QVSYSBASE_SRC_PERSISTENCE_STREAMFILE_H_
