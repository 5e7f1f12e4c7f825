// LoadStream: reads what SaveStream wrote, from a file or from bytes in memory.
// It recognises every header form of the format, reads plain values and object
// records, and keeps an object's reads inside its record where the stream
// carries end offsets.
//
// Reads never throw on short or damaged data: the stream goes bad (good() is
// false) and every further value reads as zeros. A stream from outside is
// untrusted: lengths and end offsets are checked against what the stream and
// the enclosing record can still hold before anything is allocated or read.
//
// Thread-compatible: one thread at a time. Not copyable (a handle owning its
// implementation).
#ifndef QVSYSBASE_LOADSTREAM_H_
#define QVSYSBASE_LOADSTREAM_H_

#include <string>

#include "qvsysbase/Export.h"

namespace qvsysbase {

class StreamObjectProt;
class LoadStreamImpl;

// The header forms as GetStreamVersion() reports them. Never renumbered: the
// values reach callers' version branches.
enum STREAM_VER_LOAD : int {
  ORVEL_TAGGED = 0,    // "ORV", major, minor
  ORVEL_OLDEST = 1,    // 01 00 00 00 01
  ORVEL_LEGACY = 2,    // 3A 01 01 00 00
  ORVEL_REJECTED = 3,  // anything else; the stream was refused
  ORVEL_93 = 4         // "O93", major, minor; records carry end offsets
};

class QVSYSBASE_API LoadStream {
 public:
  // Nothing open.
  LoadStream();
  ~LoadStream();
  LoadStream(const LoadStream&) = delete;
  LoadStream& operator=(const LoadStream&) = delete;

  // Opens the file for binary input: reads its header and, when the header is
  // known, the rest of the file. Throws std::logic_error "Can't open existing
  // stream" while a stream is held; std::domain_error "non ORVEL stream" for
  // an unknown header, before anything after it is read; std::domain_error
  // "stream wasn't found..." for a null path, a missing or unreadable file, a
  // directory, a read error, and a file longer than a stream can be (2^31 - 1
  // bytes: no end offset reaches further). Nothing is left open on a throw, and
  // the memory taken is bounded by the file's real size whatever its length
  // fields say.
  void InitFileStream(const char* path);
  void InitFileStream(const wchar_t* path);
  // Reads from a copy of `data`; failures as above.
  void InitMemStream(const std::string& data);
  // Releases the input stream.
  void CloseStream();

  // The header form (STREAM_VER_LOAD) and the header's versions.
  int GetStreamVersion() const;
  unsigned char GetStreamVerionMajor() const;
  unsigned char GetStreamVerionMinor() const;
  // The input stream's good state; false when nothing was opened.
  bool good() const;

  // Plain values. In a current-format stream a value must lie inside the
  // record being read: REQUIRES:
  // ((unsigned long)(std::streamoff)posCur) + size < ((unsigned long)m_EndPos)
  LoadStream& operator>>(bool& value);
  LoadStream& operator>>(char& value);
  LoadStream& operator>>(wchar_t& value);
  LoadStream& operator>>(short& value);
  LoadStream& operator>>(unsigned short& value);
  LoadStream& operator>>(int& value);
  LoadStream& operator>>(unsigned& value);
  LoadStream& operator>>(long& value);
  LoadStream& operator>>(unsigned long& value);
  LoadStream& operator>>(float& value);
  LoadStream& operator>>(double& value);
  LoadStream& operator>>(long double& value);
  LoadStream& operator>>(std::string& value);
  LoadStream& operator>>(std::wstring& value);
  // Reads one record into `object`: checks the class name, gives the object the
  // record's versions for its Load, moves to the record's end and restores the
  // object's own versions. A record nested deeper than MAX_NESTING_DEPTH
  // (SaveStream.h; the writer refuses to write one) fails the stream.
  LoadStream& operator>>(StreamObjectProt& object);

  // Look-ahead for streams without end offsets.
  // REQUIRES: GetStreamVersion() < ORVEL_93
  void PutBack(char c);
  // True when c is the close marker "]". REQUIRES: GetStreamVersion() < ORVEL_93
  bool IsCloseMarker(char c) const;

  // In a current-format stream: takes the next record whole, whatever its class,
  // sets `s` to its body (the bytes between the end offset and the close marker;
  // end offsets of records nested in it still count from the start of this
  // stream) and returns true, positioned after the record. Returns false without
  // reading in older streams. A damaged record fails the stream and returns
  // false, leaving `s` untouched.
  bool CopyCurrentStreamedObject(std::string& s);

 private:
  LoadStreamImpl* m_pImpl;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_LOADSTREAM_H_
