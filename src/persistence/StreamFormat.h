// The byte format of persistent streams, shared by the writer (SaveStream), the
// reader (LoadStream) and the inspector (StreamStructure).
//
// These bytes are a promise to every document ever saved: values that reach the
// disk are never renumbered, and a retired value stays reserved with a note.
//
// General rules
//   All multi-byte numbers are little-endian, encoded byte by byte (never by
//   copying host structures). There is no padding and no alignment anywhere.
//   Plain values carry no type tag: writer and reader agree on the sequence.
//
// Header, at offset 0, always 5 bytes
//   writer  reader  bytes                       meaning
//   1       2       3A 01 01 00 00              legacy mark; versions are 1 and 1
//   2       0       'O' 'R' 'V' major minor     older tagged format
//   3       4       'O' '9' '3' major minor     current: records carry end offsets
//   -       1       01 00 00 00 01              oldest writer; versions 1 and 1
//   The writer numbers the formats 1..3; the reader reports 0..4 (3 meaning a
//   rejected stream). The tags are the first and last three letters of
//   "ORVORVO93" and are compared on three bytes only. The reader tests the forms
//   in the order ORV, oldest, legacy, O93; any other first five bytes are
//   rejected.
//
// Plain values (bytes written)
//   bool                      4  0 or 1 as unsigned 32-bit; read: any non-zero is true
//   char                      1
//   wchar_t                   2  one UTF-16 unit; a value above U+FFFF is written U+FFFD
//   short, unsigned short     2
//   int, unsigned             4
//   long, unsigned long       4  values beyond 32 bits are refused (std::out_of_range);
//                                read: long sign-extends, unsigned long zero-extends
//   float                     4  IEEE 754 single
//   double                    8  IEEE 754 double
//   long double              10  x87 80-bit extended: 64-bit mantissa with explicit
//                                integer bit, 15-bit biased exponent, sign
//   const char*, std::string  4-byte length n, then n bytes, no terminator
//   std::wstring              4-byte length 2u (bytes), then u UTF-16LE units; code
//                             points above U+FFFF become surrogate pairs
//   const wchar_t*            4-byte length 4u for u UTF-16 units, then 4u bytes: the
//                             u units, then zero bytes (the first two being the
//                             terminating unit). The doubled length is historical and
//                             kept so old readers see the same record.
//
// Object record
//   offset  size  field
//   0       1     open marker '[' (0x5B)
//   1       4     class-name length n, 1 <= n < 100 (MAX_CLASSNAME_SIZE)
//   5       n     class name, narrow characters, no terminator ("ns::Class")
//   5+n     4     major version, signed 32-bit
//   9+n     4     minor version, signed 32-bit
//   13+n    4     current format only: end offset, the absolute position (from the
//                 first header byte) of the byte after this record's close marker
//   ...           body: whatever the object's Save wrote, nested records included
//   end-1   1     close marker ']' (0x5D)
//   The writer emits the end offset as a placeholder and back-patches it after
//   the close marker. Without end offsets (older formats) a record's end can
//   only be found by reading its body; a reader that gives up scans to the next
//   ']'.
//
// Reader limits for untrusted input (not part of what the writer produces)
//   Every length is checked against what is left of the stream and of the
//   enclosing record before anything is allocated; an end offset must lie after
//   the record's header, within the stream and within the enclosing record, and
//   point just past a ']'.
//
// Nesting: records nest at most kMaxNestingDepth deep, the outermost counted;
// the writer refuses a deeper record and the reader fails on one.
#ifndef QVSYSBASE_SRC_PERSISTENCE_STREAMFORMAT_H_
#define QVSYSBASE_SRC_PERSISTENCE_STREAMFORMAT_H_

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

#include "qvsysbase/SaveStream.h"

namespace qvsysbase::streamformat {

// Reader and writer refuse a second open with the same text.
inline constexpr const char* kOpenExisting = "Can't open existing stream";

inline constexpr std::size_t kHeaderSize = 5;
inline constexpr char kTagOrv[3] = {'O', 'R', 'V'};
inline constexpr char kTagO93[3] = {'O', '9', '3'};
inline constexpr unsigned char kLegacyMark[kHeaderSize] = {0x3A, 0x01, 0x01, 0x00, 0x00};
inline constexpr unsigned char kOldestMark[kHeaderSize] = {0x01, 0x00, 0x00, 0x00, 0x01};

// Writer numbering of the formats (SaveStreamImpl::m_StreamVer). 2, the tagged
// format, is read but written by no operation; the number stays reserved.
inline constexpr int kWriteLegacy = 1;
inline constexpr int kWriteCurrent = 3;

inline constexpr char kOpenMarker = '[';
inline constexpr char kCloseMarker = ']';
inline constexpr std::uint32_t kMaxClassNameSize = 100;

// Sizes of the fixed parts of a record: marker + name length, then the two
// versions, then the end offset of the current format.
inline constexpr std::size_t kRecordLead = 1 + 4;
inline constexpr std::size_t kVersionsSize = 4 + 4;
inline constexpr std::size_t kEndOffsetSize = 4;
inline constexpr std::size_t kExtendedSize = 10;

// Writer and reader share the public limit: what one writes the other reads.
inline constexpr int kMaxNestingDepth = MAX_NESTING_DEPTH;

// --- Little-endian encoding --------------------------------------------------

template <typename U>
inline void EncodeLE(U value, unsigned char* out) {
  static_assert(std::is_unsigned_v<U>);
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(out, &value, sizeof(U));
  } else {
    for (std::size_t i = 0; i < sizeof(U); ++i)
      out[i] = static_cast<unsigned char>(value >> (8 * i));
  }
}

template <typename U>
inline U DecodeLE(const unsigned char* in) {
  static_assert(std::is_unsigned_v<U>);
  U value = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&value, in, sizeof(U));
  } else {
    for (std::size_t i = 0; i < sizeof(U); ++i) value |= static_cast<U>(in[i]) << (8 * i);
  }
  return value;
}

inline std::uint32_t DecodeU32(const char* in) {
  return DecodeLE<std::uint32_t>(reinterpret_cast<const unsigned char*>(in));
}

// --- 80-bit extended precision -----------------------------------------------

// True where long double is the x87 format itself, so its first 10 bytes are the
// stream image.
inline constexpr bool kNativeExtended = std::numeric_limits<long double>::digits == 64 &&
                                        std::numeric_limits<long double>::max_exponent == 16384 &&
                                        std::endian::native == std::endian::little;

// Portable conversion for platforms whose long double is not the x87 format:
// value = (-1)^sign * mantissa * 2^(exponent - 16383 - 63), the integer bit
// explicit; exponent 0x7FFF is infinity (mantissa 1 << 63) or NaN.
inline void EncodeExtendedPortable(long double value, unsigned char out[kExtendedSize]) {
  constexpr int kBias = 16383;
  std::uint64_t mantissa = 0;
  int exponent = 0;
  if (std::isnan(value)) {
    exponent = 0x7FFF;
    mantissa = 0xC000000000000000ULL;
  } else if (std::isinf(value)) {
    exponent = 0x7FFF;
    mantissa = 0x8000000000000000ULL;
  } else if (value != 0) {
    int e = 0;
    const long double m = std::frexp(std::fabs(value), &e);  // m in [0.5, 1)
    mantissa = static_cast<std::uint64_t>(std::ldexp(m, 64));
    exponent = e - 1 + kBias;
    if (exponent <= 0) {  // subnormal in the extended format
      mantissa = 1 - exponent >= 64 ? 0 : mantissa >> (1 - exponent);
      exponent = 0;
    } else if (exponent >= 0x7FFF) {
      exponent = 0x7FFF;
      mantissa = 0x8000000000000000ULL;
    }
  }
  EncodeLE<std::uint64_t>(mantissa, out);
  const auto top = static_cast<std::uint16_t>((std::signbit(value) ? 0x8000 : 0) | exponent);
  EncodeLE<std::uint16_t>(top, out + 8);
}

inline long double DecodeExtendedPortable(const unsigned char in[kExtendedSize]) {
  const auto mantissa = DecodeLE<std::uint64_t>(in);
  const auto top = DecodeLE<std::uint16_t>(in + 8);
  const int exponent = top & 0x7FFF;
  long double value = 0;
  if (exponent == 0x7FFF) {
    value = (mantissa << 1) == 0 ? std::numeric_limits<long double>::infinity()
                                 : std::numeric_limits<long double>::quiet_NaN();
  } else {
    const int scale = (exponent == 0 ? 1 : exponent) - 16383 - 63;
    value = std::ldexp(static_cast<long double>(mantissa), scale);
  }
  return (top & 0x8000) ? -value : value;
}

inline void EncodeExtended(long double value, unsigned char out[kExtendedSize]) {
  if constexpr (kNativeExtended) {
    std::memcpy(out, &value, kExtendedSize);
  } else {
    EncodeExtendedPortable(value, out);
  }
}

inline long double DecodeExtended(const unsigned char in[kExtendedSize]) {
  if constexpr (kNativeExtended) {
    long double value = 0;
    std::memcpy(&value, in, kExtendedSize);
    return value;
  } else {
    return DecodeExtendedPortable(in);
  }
}

// --- UTF-16 ------------------------------------------------------------------

inline constexpr char16_t kReplacementCharacter = 0xFFFD;

// One wchar_t as one unit: the stream's single character is a UTF-16 unit.
inline char16_t ToSingleUnit(wchar_t c) {
  const auto code = static_cast<std::uint32_t>(c);
  return code > 0xFFFF ? kReplacementCharacter : static_cast<char16_t>(code);
}

// Number of UTF-16 units of s: code points above U+FFFF take a surrogate pair,
// values beyond U+10FFFF one replacement character.
inline std::size_t Utf16Length(const wchar_t* s, std::size_t n) {
  std::size_t units = n;
  for (std::size_t i = 0; i < n; ++i) {
    const auto code = static_cast<std::uint32_t>(s[i]);
    if (code > 0xFFFF && code <= 0x10FFFF) ++units;
  }
  return units;
}

// Appends n little-endian UTF-16 units to s, joining surrogate pairs back; a
// lone surrogate is kept as it stands.
inline void AppendFromUtf16LE(const unsigned char* bytes, std::size_t n, std::wstring& s) {
  // n units make at most n characters: write through a pointer, then trim to
  // what the surrogate pairs left.
  const std::size_t start = s.size();
  s.resize(start + n);
  wchar_t* out = s.data() + start;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t u = DecodeLE<std::uint16_t>(bytes + 2 * i);
    if (u >= 0xD800 && u < 0xDC00 && i + 1 < n) {
      const std::uint32_t low = DecodeLE<std::uint16_t>(bytes + 2 * (i + 1));
      if (low >= 0xDC00 && low < 0xE000) {
        *out++ = static_cast<wchar_t>(0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
        ++i;
        continue;
      }
    }
    *out++ = static_cast<wchar_t>(u);
  }
  s.resize(static_cast<std::size_t>(out - s.data()));
}

}  // namespace qvsysbase::streamformat

#endif  // QVSYSBASE_SRC_PERSISTENCE_STREAMFORMAT_H_
