// Helpers of the persistence tests: writing into memory, patching bytes, and
// small persistent objects.
#ifndef QVSYSBASE_TESTS_PERSISTENCE_STREAMTESTSUPPORT_H_
#define QVSYSBASE_TESTS_PERSISTENCE_STREAMTESTSUPPORT_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include "ExpectThrow.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"
#include "qvsysbase/StreamObject.h"
#include "qvsysbase/qvExcept.h"

namespace qvtest {

using namespace qvsysbase;
using testing_support::ExpectThrowText;

inline std::string Bytes(SaveStream& out) {
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

// Lower-case hex, bytes separated by spaces.
inline std::string Hex(const std::string& bytes) {
  std::string out;
  char digits[4];
  for (unsigned char c : bytes) out += (std::snprintf(digits, 4, " %02x", c), digits);
  return out.empty() ? out : out.substr(1);
}

// The bytes of a memory stream after `write` ran on it.
inline std::string Write(const std::function<void(SaveStream&)>& write,
                         STREAM_VER_SAVE ver = STREAM_VER_SAVE_CURRENT) {
  SaveStream out;
  out.InitMemStream(ver);
  write(out);
  return Bytes(out);
}

// Damages to a stream: one byte set, a 32-bit field patched, or the end cut.
using Damage = std::function<void(std::string&)>;
inline Damage SetByte(std::size_t at, char c) {
  return [=](std::string& b) { b[at] = c; };
}
inline Damage Patch(std::size_t at, std::uint32_t v) {
  return [=](std::string& b) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<char>(v >> (8 * i));
  };
}
inline Damage Cut(std::size_t size) {
  return [=](std::string& b) { b.resize(size); };
}

// A path under the temporary directory, unique to this process (test binaries
// of other builds may run at the same time), removed with all below it.
class TempPath {
 public:
  explicit TempPath(const std::string& name)
      : m_path(std::filesystem::temp_directory_path() /
               ("qv_" + std::to_string(::getpid()) + "_" + name)) {}
  ~TempPath() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TempPath(const TempPath&) = delete;
  TempPath& operator=(const TempPath&) = delete;
  const std::filesystem::path& path() const { return m_path; }
  const char* c_str() const { return m_path.c_str(); }

 private:
  std::filesystem::path m_path;
};

// An object with a chosen class name, whose body is `ints` integers; Load
// reads `m_nReads` of them.
class Named : public StreamObject {
 public:
  explicit Named(std::string name, int ints = 0, int reads = 0)
      : m_strName(std::move(name)), m_nInts(ints), m_nReads(reads) {}
  std::string getClassName() const override { return m_strName; }
  void Save(SaveStream& s) const override {
    for (int i = 0; i < m_nInts; ++i) s << i;
  }
  bool Load(LoadStream& s) override {
    m_nSeenMajor = GetVersionMajor();
    for (int i = 0; i < m_nReads; ++i) s >> m_nLast;
    return true;
  }

  std::string m_strName;
  int m_nInts, m_nReads;
  int m_nSeenMajor = -1, m_nLast = -1;
};

}  // namespace qvtest

#endif  // QVSYSBASE_TESTS_PERSISTENCE_STREAMTESTSUPPORT_H_
