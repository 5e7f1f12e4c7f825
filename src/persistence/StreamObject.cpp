// Persistent objects: versions, class names and the string round trip.
#include "qvsysbase/StreamObject.h"

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <typeindex>
#include <typeinfo>
#include <unordered_map>

#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"

namespace qvsysbase {
namespace {

// Any record written under a name containing this is accepted by every
// StreamObject: the generic placeholders of older writers carried it.
constexpr const char* kGenericName = "StreamObject";

std::string Demangle(const char* mangled) {
  int status = 0;
  std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
  return status == 0 && name ? std::string(name.get()) : std::string(mangled);
}

// Every record written or read asks its object for the class name, and
// demangling costs about a microsecond, so each thread keeps the names of the
// types it has met. Thread-local: streams of different threads need no lock.
const std::string& ClassNameOf(const std::type_info& type) {
  thread_local std::unordered_map<std::type_index, std::string> names;
  auto it = names.find(type);
  if (it == names.end()) it = names.emplace(type, Demangle(type.name())).first;
  return it->second;
}

}  // namespace

StreamObjectProt::~StreamObjectProt() = default;

StreamObject::StreamObject() : StreamObject(1, 1) {}
StreamObject::StreamObject(int major, int minor) : m_pVersions(new Versions{major, minor}) {}
StreamObject::StreamObject(const StreamObject& other)
    : StreamObjectProt(other),
      m_pVersions(new Versions{other.GetVersionMajor(), other.GetVersionMinor()}) {}
StreamObject& StreamObject::operator=(const StreamObject& other) {
  m_pVersions->major = other.GetVersionMajor();
  m_pVersions->minor = other.GetVersionMinor();
  return *this;
}
StreamObject::~StreamObject() { delete m_pVersions; }

int StreamObject::GetVersionMajor() const { return m_pVersions->major; }
int StreamObject::GetVersionMinor() const { return m_pVersions->minor; }
void StreamObject::SetVersionMajor(int major) { m_pVersions->major = major; }
void StreamObject::SetVersionMinor(int minor) { m_pVersions->minor = minor; }

void StreamObject::ProcessInvalidClassName(const char* name, bool& accept) const {
  const std::string own = getClassName();
  const std::string_view other(name);
  if (own.find(other) != std::string::npos || other.find(own) != std::string_view::npos ||
      other.find(kGenericName) != std::string_view::npos) {
    accept = true;
  }
}

std::string StreamObject::getClassName() const { return ClassNameOf(typeid(*this)); }

bool StreamObject::ReadFromString(const std::string& s) {
  if (s.empty()) return false;
  LoadStream stream;
  stream.InitMemStream(s);
  stream >> *this;
  return stream.good();
}

void StreamObject::WriteToString(std::string& s) const {
  SaveStream stream(1, 1);
  stream.InitMemStream(STREAM_VER_SAVE_CURRENT);
  stream << *this;
  int length = 0;
  const char* bytes = stream.GetStreamBuffer(length);
  s.assign(bytes, static_cast<std::size_t>(length));
}

StreamObject2Skip::StreamObject2Skip() : StreamObject(0, 0) {}
void StreamObject2Skip::Save(SaveStream&) const {}
bool StreamObject2Skip::Load(LoadStream&) { return true; }
void StreamObject2Skip::ProcessInvalidClassName(const char*, bool& accept) const { accept = true; }

}  // namespace qvsysbase
