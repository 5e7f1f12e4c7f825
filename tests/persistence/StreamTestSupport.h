// Helpers of the persistence tests: writing into memory, damaging bytes, and
// small persistent objects.
#ifndef QVSYSBASE_TESTS_PERSISTENCE_STREAMTESTSUPPORT_H_
#define QVSYSBASE_TESTS_PERSISTENCE_STREAMTESTSUPPORT_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"
#include "qvsysbase/StreamObject.h"
#include "qvsysbase/qvExcept.h"

namespace qvtest {

using namespace qvsysbase;

inline std::string Bytes(SaveStream& out) {
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

// Lower-case hex, bytes separated by spaces.
inline std::string Hex(const std::string& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  for (unsigned char c : bytes) {
    if (!out.empty()) out += ' ';
    out += kDigits[c >> 4];
    out += kDigits[c & 15];
  }
  return out;
}

// The bytes of a memory stream after `write` ran on it.
inline std::string Write(const std::function<void(SaveStream&)>& write,
                         STREAM_VER_SAVE ver = STREAM_VER_SAVE_CURRENT) {
  SaveStream out;
  out.InitMemStream(ver);
  write(out);
  return Bytes(out);
}

inline void PatchU32(std::string& bytes, std::size_t offset, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[offset + i] = static_cast<char>(value >> (8 * i));
}
inline std::uint32_t DecodeAt(const std::string& bytes, std::size_t offset) {
  std::uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(bytes[offset + i]);
  return v;
}
inline void FlipByte(std::string& bytes, std::size_t offset) { bytes[offset] ^= 0xFF; }
inline std::string Truncate(const std::string& bytes, std::size_t size) {
  return bytes.substr(0, size);
}

// Runs `call` and checks that it fails the assertion `condition` of `unit`.
template <typename F>
void ExpectAssertion(F call, const std::string& condition, const std::string& unit) {
  try {
    call();
    ADD_FAILURE() << "no assertion, expected " << condition;
  } catch (const AssertionException& e) {
    EXPECT_EQ(e.getMessage(), condition);
    EXPECT_EQ(e.getFile(), unit);
    EXPECT_EQ(e.getOrvelVersion(), "12.00");
  }
}

template <typename E, typename F>
void ExpectThrowText(F call, const std::string& text) {
  try {
    call();
    ADD_FAILURE() << "no exception, expected " << text;
  } catch (const E& e) {
    EXPECT_EQ(std::string(e.what()), text);
  }
}

// An object with a chosen class name, whose body is `ints` integers.
class Named : public StreamObject {
 public:
  explicit Named(std::string name, int ints = 0) : m_strName(std::move(name)), m_nInts(ints) {}
  std::string getClassName() const override { return m_strName; }
  void Save(SaveStream& s) const override {
    for (int i = 0; i < m_nInts; ++i) s << i;
  }
  bool Load(LoadStream& s) override {
    m_nSeenMajor = GetVersionMajor();
    for (int i = 0; i < m_nReads; ++i) s >> m_nLast;
    return m_bAccept;
  }

  std::string m_strName;
  int m_nInts;
  int m_nReads = 0;  // how many ints Load reads
  bool m_bAccept = true;
  int m_nSeenMajor = -1;
  int m_nLast = -1;
};

// Holds another object as its body.
class Wrapper : public StreamObject {
 public:
  explicit Wrapper(StreamObjectProt& inner) : m_inner(inner) {}
  std::string getClassName() const override { return "qvtest::Wrapper"; }
  void Save(SaveStream& s) const override { s << m_inner; }
  bool Load(LoadStream& s) override {
    s >> m_inner;
    return true;
  }

 private:
  StreamObjectProt& m_inner;
};

}  // namespace qvtest

#endif  // QVSYSBASE_TESTS_PERSISTENCE_STREAMTESTSUPPORT_H_
