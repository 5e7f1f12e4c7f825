// Persistent objects: the interface every object in a stream implements, the
// usual base class that keeps its format version, and the placeholder that
// steps over a record of unknown class.
//
// There is no class registry: the reader always knows which object it reads
// next and hands that object to the stream. A class raises its versions in its
// constructor when its format changes; during Load the versions are those of
// the record being read, so Load branches on them (oldest first), reading the
// base part before the derived part.
//
// Thread-compatible. StreamObject is intentionally copyable: copying copies the
// two versions.
#ifndef QVSYSBASE_STREAMOBJECT_H_
#define QVSYSBASE_STREAMOBJECT_H_

#include <string>

#include "qvsysbase/Export.h"

namespace qvsysbase {

class SaveStream;
class LoadStream;

// The interface of everything that goes into a stream, with no data of its own.
// The streams write and read the record's frame (class name, versions, end
// offset) and call Save and Load for the body between; the versions carry the
// format of the object's code, and during Load that of the record being read.
// Most classes derive from StreamObject, which implements all but Save and Load.
class QVSYSBASE_API StreamObjectProt {
 public:
  // Writes the body of the object's record; the stream writes the frame.
  virtual void Save(SaveStream& stream) const = 0;
  // Reads the body, branching on the versions; false when the data are not
  // acceptable, which fails the stream.
  virtual bool Load(LoadStream& stream) = 0;
  // The major version: of the object's code, or during Load of the record.
  virtual int GetVersionMajor() const = 0;
  // The minor version, likewise.
  virtual int GetVersionMinor() const = 0;
  // Sets the major version; the reader sets the record's before Load.
  virtual void SetVersionMajor(int major) = 0;
  // Sets the minor version, likewise.
  virtual void SetVersionMinor(int minor) = 0;
  virtual ~StreamObjectProt();
  // Decides whether a record written under `name` may be read into this object:
  // sets accept to true to take it, leaves it unchanged to refuse.
  virtual void ProcessInvalidClassName(const char* name, bool& accept) const = 0;
  // The name written into the object's records, "namespace::Class", shorter
  // than MAX_CLASSNAME_SIZE.
  virtual std::string getClassName() const = 0;
  // Reads this object from a whole stream held in s; true when it read well.
  virtual bool ReadFromString(const std::string& s) = 0;
  // Sets s to a whole stream holding this object as its one record.
  virtual void WriteToString(std::string& s) const = 0;

 protected:
  StreamObjectProt() = default;
  StreamObjectProt(const StreamObjectProt&) = default;
  StreamObjectProt& operator=(const StreamObjectProt&) = default;
};

class QVSYSBASE_API StreamObject : public StreamObjectProt {
 public:
  // Versions 1 and 1.
  StreamObject();
  StreamObject(int major, int minor);
  StreamObject(const StreamObject& other);
  StreamObject& operator=(const StreamObject& other);
  ~StreamObject() override;

  int GetVersionMajor() const override;
  int GetVersionMinor() const override;
  void SetVersionMajor(int major) override;
  void SetVersionMinor(int minor) override;

  // Accepts a name that is contained in this class's name, that contains it, or
  // that contains "StreamObject"; otherwise leaves accept unchanged.
  void ProcessInvalidClassName(const char* name, bool& accept) const override;
  // The dynamic type's name as run-time type information spells it, namespace
  // included ("qvsysbase::StreamObject2Skip"). A class on a hot path may return
  // a constant of the same spelling instead.
  std::string getClassName() const override;
  // Opens a memory stream on s and reads this object as one record: good() of
  // the stream; false at once for an empty s. Throws std::domain_error
  // "non ORVEL stream" for a text without a valid header.
  bool ReadFromString(const std::string& s) override;
  // s becomes a current-format stream (versions 1.1) holding this object as one
  // record, header included.
  void WriteToString(std::string& s) const override;

 private:
  struct Versions {
    int major;
    int minor;
  };
  Versions* m_pVersions;
};

// Accepts any record and ignores its content: reading one steps over a record of
// unknown class. Versions 0 and 0.
class QVSYSBASE_API StreamObject2Skip : public StreamObject {
 public:
  StreamObject2Skip();
  void Save(SaveStream& stream) const override;
  bool Load(LoadStream& stream) override;
  void ProcessInvalidClassName(const char* name, bool& accept) const override;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_STREAMOBJECT_H_
