// Persistent test objects shared by the stream reader's fuzz target, its seed
// corpus and the reader's tests: a leaf with one value of each common kind and
// a node that nests a leaf and, optionally, another node.
#ifndef QVSYSBASE_FUZZ_STREAMFUZZOBJECTS_H_
#define QVSYSBASE_FUZZ_STREAMFUZZOBJECTS_H_

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"
#include "qvsysbase/StreamObject.h"
#include "qvsysbase/qvExcept.h"

namespace qvfuzz {

class Leaf : public qvsysbase::StreamObject {
 public:
  Leaf() = default;
  Leaf(int count, double value, std::string name, std::wstring label)
      : m_nCount(count),
        m_dValue(value),
        m_strName(std::move(name)),
        m_wstrLabel(std::move(label)) {}
  void Save(qvsysbase::SaveStream& s) const override {
    s << m_nCount << m_dValue << m_strName << m_wstrLabel;
  }
  bool Load(qvsysbase::LoadStream& s) override {
    s >> m_nCount >> m_dValue >> m_strName >> m_wstrLabel;
    return m_nCount >= 0;  // a negative count is data this class refuses
  }
  bool operator==(const Leaf& o) const {
    return m_nCount == o.m_nCount && m_dValue == o.m_dValue && m_strName == o.m_strName &&
           m_wstrLabel == o.m_wstrLabel;
  }

  int m_nCount = 0;
  double m_dValue = 0;
  std::string m_strName;
  std::wstring m_wstrLabel;
};

// Version 2 added a trailing note; records of version 1 lack it. In streams
// without end offsets the note is found by looking ahead for the close marker.
class Node : public qvsysbase::StreamObject {
 public:
  Node() : StreamObject(2, 0) {}
  void Save(qvsysbase::SaveStream& s) const override {
    s << m_leaf << (m_pChild != nullptr);
    if (m_pChild) s << *m_pChild;
    s << m_strNote;
  }
  bool Load(qvsysbase::LoadStream& s) override {
    bool hasChild = false;
    s >> m_leaf >> hasChild;
    if (hasChild) {
      m_pChild = std::make_unique<Node>();
      s >> *m_pChild;
    }
    if (GetVersionMajor() < 2) return true;
    if (s.GetStreamVersion() < qvsysbase::ORVEL_93) {
      char next = 0;
      s >> next;
      s.PutBack(next);
      if (s.IsCloseMarker(next)) return true;
    }
    s >> m_strNote;
    return true;
  }
  bool operator==(const Node& o) const {
    const bool children = (m_pChild == nullptr) == (o.m_pChild == nullptr) &&
                          (m_pChild == nullptr || *m_pChild == *o.m_pChild);
    return children && m_leaf == o.m_leaf && m_strNote == o.m_strNote;
  }

  Leaf m_leaf;
  std::unique_ptr<Node> m_pChild;
  std::string m_strNote;
};

// A node of `depth` levels whose values vary with the level.
inline std::unique_ptr<Node> MakeChain(int depth) {
  auto node = std::make_unique<Node>();
  node->m_leaf = Leaf(depth, depth * 0.5, "leaf" + std::to_string(depth), L"\u00e9t\u00e9");
  node->m_strNote = "n]" + std::to_string(depth);
  if (depth > 1) node->m_pChild = MakeChain(depth - 1);
  return node;
}

// The document every seed holds: a node chain, then a leaf to be skipped.
inline std::string SaveDocument(qvsysbase::STREAM_VER_SAVE ver, int depth) {
  qvsysbase::SaveStream out(3, 4);
  out.InitMemStream(ver);
  out << *MakeChain(depth) << Leaf(7, -1.5, "skipped", L"x");
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

// Valid streams in every header form the reader knows. The two older forms
// without end offsets share the legacy body under another header.
inline std::vector<std::pair<std::string, std::string>> SeedStreams() {
  std::vector<std::pair<std::string, std::string>> seeds;
  for (int depth : {1, 3}) {
    const std::string suffix = "_depth" + std::to_string(depth);
    const std::string current = SaveDocument(qvsysbase::STREAM_VER_SAVE_CURRENT, depth);
    const std::string legacy = SaveDocument(qvsysbase::STREAM_VER_SAVE_LEGACY, depth);
    seeds.emplace_back("o93" + suffix, current);
    seeds.emplace_back("legacy" + suffix, legacy);
    seeds.emplace_back("orv" + suffix, std::string("ORV\x03\x04", 5) + legacy.substr(5));
    seeds.emplace_back("oldest" + suffix,
                       std::string("\x01\x00\x00\x00\x01", 5) + legacy.substr(5));
  }
  return seeds;
}

// What the fuzz target does with arbitrary bytes: read a node and skip the next
// record, then copy one more. Only the documented failures are caught.
inline void ReadUntrusted(const std::string& bytes) {
  qvsysbase::LoadStream in;
  try {
    in.InitMemStream(bytes);
  } catch (const std::domain_error&) {
    return;  // "non ORVEL stream"
  }
  try {
    Node node;
    qvsysbase::StreamObject2Skip skip;
    in >> node >> skip;
    std::string body;
    in.CopyCurrentStreamedObject(body);
  } catch (const qvsysbase::AssertionException&) {
    // An object reading past its record's end in a current-format stream.
  }
}

}  // namespace qvfuzz

#endif  // QVSYSBASE_FUZZ_STREAMFUZZOBJECTS_H_
