// SaveStream: writes values and object records into a versioned little-endian
// byte stream held in a file or in memory. The byte format is fixed; LoadStream
// reads it back.
//
//   SaveStream out;                  // versions 1.1
//   out.InitMemStream();             // current format, header "O93" 1 1
//   out << 42 << std::wstring(L"x") << someObject;
//   int n = 0;
//   const char* bytes = out.GetStreamBuffer(n);   // copy n bytes from here
//
// A SaveStream serves one stream in its life: it cannot be reopened, even after
// CloseStream. Writes do not throw when the medium fails (a full disk, memory
// exhausted): good() turns false and stays so. File streams write in blocks, so
// a failing write shows when its block goes out, at the latest in CloseStream.
//
// Thread-compatible: one thread at a time. Not copyable (a handle owning its
// implementation).
#ifndef QVSYSBASE_SAVESTREAM_H_
#define QVSYSBASE_SAVESTREAM_H_

#include <string>

#include "qvsysbase/Export.h"

namespace qvsysbase {

class StreamObjectProt;
class SaveStreamImpl;

// The format chosen when a stream is opened. 1 selects the legacy format;
// every other value selects the current one (with end offsets in records).
enum STREAM_VER_SAVE : int { STREAM_VER_SAVE_CURRENT = 0, STREAM_VER_SAVE_LEGACY = 1 };

// A class name written into a record must be shorter than this many bytes.
inline constexpr unsigned MAX_CLASSNAME_SIZE = 100;

// Object records nest at most this many deep, the outermost counted. The writer
// refuses a deeper record and the reader fails on one: deep enough for any real
// document, shallow enough that a hostile stream cannot exhaust the call stack
// of the recursive Load calls.
inline constexpr int MAX_NESTING_DEPTH = 256;

class QVSYSBASE_API SaveStream {
 public:
  // Stream versions 1 and 1.
  SaveStream();
  // The versions written into the header of a tagged or current-format stream.
  SaveStream(unsigned char major, unsigned char minor);
  // Closes the stream.
  ~SaveStream();
  SaveStream(const SaveStream&) = delete;
  SaveStream& operator=(const SaveStream&) = delete;

  // Opens `path` for binary output (created or truncated) and writes the header.
  // Throws std::logic_error "Can't open existing stream" while a stream is held,
  // std::domain_error "stream creation has failed..." when the file cannot be
  // created. REQUIRES: m_StreamVer == UNDEFINED (the SaveStream was never opened)
  void InitFileStream(const char* path);
  void InitFileStream(const char* path, STREAM_VER_SAVE ver);
  // Opens an in-memory stream and writes the header; failures as above, the
  // creation failure being "stream creation was failed...".
  void InitMemStream();
  void InitMemStream(STREAM_VER_SAVE ver);

  // For a memory stream: sets `length` to the number of bytes written so far
  // and returns their first byte. The bytes stay owned by this SaveStream and
  // the pointer is valid until the next write or CloseStream; copy them out.
  // Returns null, leaving `length` untouched, for a file or when nothing was
  // opened. Throws std::domain_error "The stream buffer wasn't found" for a
  // memory stream already closed.
  const char* GetStreamBuffer(int& length);

  // Flushes and closes the stream. The SaveStream cannot be opened again.
  void CloseStream();

  // True while every write so far succeeded. False before a stream was opened
  // and from the first write that failed or was lost: a block the medium
  // refused, a write after CloseStream, a record left unfinished by an
  // exception. After CloseStream it also reflects the final flush and close.
  bool good() const;

  // Each writes the value's fixed little-endian image and returns *this.
  SaveStream& operator<<(bool value);
  SaveStream& operator<<(char value);
  // One UTF-16 unit; a character above U+FFFF is written as U+FFFD.
  SaveStream& operator<<(wchar_t value);
  SaveStream& operator<<(short value);
  SaveStream& operator<<(unsigned short value);
  SaveStream& operator<<(int value);
  SaveStream& operator<<(unsigned value);
  // 4 bytes; throws std::out_of_range "value doesn't fit in 32 bits" (nothing
  // written) when the value needs more.
  SaveStream& operator<<(long value);
  SaveStream& operator<<(unsigned long value);
  SaveStream& operator<<(float value);
  SaveStream& operator<<(double value);
  // 10 bytes, 80-bit extended precision.
  SaveStream& operator<<(long double value);
  // A 4-byte length, then the bytes without terminator. REQUIRES: value != nullptr
  SaveStream& operator<<(const char* value);
  SaveStream& operator<<(const std::string& value);
  // A 4-byte byte count (twice the UTF-16 units), then the units.
  SaveStream& operator<<(const std::wstring& value);
  // A 4-byte length of four bytes per UTF-16 unit, then that many bytes: the
  // units followed by zero bytes. REQUIRES: value != nullptr
  SaveStream& operator<<(const wchar_t* value);
  // One object record: the frame around what the object's Save writes. Throws
  // std::logic_error "object records nest too deep", before writing anything of
  // the record, when MAX_NESTING_DEPTH records are being written already; the
  // records around it then stay unfinished and good() is false, as after any
  // exception that ends a record's writing.
  // REQUIRES: length < MAX_CLASSNAME_SIZE (of the object's class name)
  SaveStream& operator<<(const StreamObjectProt& object);

 private:
  SaveStreamImpl* m_pImpl;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_SAVESTREAM_H_
