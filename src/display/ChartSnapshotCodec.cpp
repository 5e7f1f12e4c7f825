// Writing and reading a snapshot as a nested legacy-form stream; the layout is
// described in FrozenChartFormat.h.
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "display/ChartSnapshot.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"

namespace qvsysbase {

namespace {

class Encoder {
 public:
  explicit Encoder(SaveStream& out) : m_out(out) {}

  void Put(int v) { m_out << v; }
  void Put(unsigned v) { m_out << v; }
  void Put(bool v) { m_out << v; }
  void Put(double v) { m_out << v; }
  void Put(const std::wstring& v) { m_out << v; }
  void Put(const VarCaseKey& k) { Put(k.nVar), Put(k.nCase); }
  void Put(const AxisStatusKey& k) { Put(k.nType), Put(k.nAxisPos), Put(k.dPosn), Put(k.nVar); }
  void Put(const CompConstraintKey& k) { Put(k.dPosn), Put(k.nVar), Put(k.bAlphaMeansAlpha); }
  void Put(const VarCasesKey& k) { Put(k.nVar), Put(k.vecCases); }
  void Put(const PointAttributes& p) {
    Put(p.bValid), Put(p.bConnected), Put(p.dValue), Put(p.wstrText), Put(p.nPointStatus);
    Put(p.nPointColor), Put(p.bPointMarked), Put(p.bLabelMajor), Put(p.wstrLabel), Put(p.wstrHint);
  }
  void Put(const HintLabel& h) { Put(h.bResult), Put(h.wstrText); }
  void Put(const CompConstraint& c) { Put(c.nResult), Put(c.wstrText); }
  void Put(const Consolidated& c) { Put(c.dValue), Put(c.wstrLabel), Put(c.wstrHint); }
  void Put(const ParamConstraints& c) { Put(c.bLeftAlign), Put(c.vecPairs); }
  void Put(const ParamDiffConstraints& c) { Put(c.bLeftAlign), Put(c.vecPairs); }
  template <typename A, typename B>
  void Put(const std::pair<A, B>& p) {
    Put(p.first), Put(p.second);
  }
  template <typename T>
  void Put(const std::vector<T>& list) {
    Put(static_cast<unsigned>(list.size()));
    for (const T& e : list) Put(e);
  }
  template <typename V>
  void Put(const std::map<unsigned, V>& map) {
    Put(static_cast<unsigned>(map.size()));
    for (const auto& [key, value] : map) Put(key), Put(value);
  }

 private:
  SaveStream& m_out;
};

// Reads fail softly: once the nested stream is bad (or a rule is broken) every
// further read yields zeros and every list ends, so a damaged count costs at
// most one pass over the bytes that are really there.
class Decoder {
 public:
  explicit Decoder(LoadStream& in) : m_in(in) {}
  bool Good() const { return m_bOk && m_in.good(); }

  void Get(int& v) { m_in >> v; }
  void Get(unsigned& v) { m_in >> v; }
  void Get(bool& v) { m_in >> v; }
  void Get(double& v) { m_in >> v; }
  void Get(std::wstring& v) { m_in >> v; }
  void Get(VarCaseKey& k) { Get(k.nVar), Get(k.nCase); }
  void Get(AxisStatusKey& k) { Get(k.nType), Get(k.nAxisPos), Get(k.dPosn), Get(k.nVar); }
  void Get(CompConstraintKey& k) { Get(k.dPosn), Get(k.nVar), Get(k.bAlphaMeansAlpha); }
  void Get(VarCasesKey& k) { Get(k.nVar), Get(k.vecCases); }
  void Get(PointAttributes& p) {
    Get(p.bValid), Get(p.bConnected), Get(p.dValue), Get(p.wstrText), Get(p.nPointStatus);
    Get(p.nPointColor), Get(p.bPointMarked), Get(p.bLabelMajor), Get(p.wstrLabel), Get(p.wstrHint);
  }
  void Get(HintLabel& h) { Get(h.bResult), Get(h.wstrText); }
  void Get(CompConstraint& c) { Get(c.nResult), Get(c.wstrText); }
  void Get(Consolidated& c) { Get(c.dValue), Get(c.wstrLabel), Get(c.wstrHint); }
  void Get(ParamConstraints& c) { Get(c.bLeftAlign), Get(c.vecPairs); }
  void Get(ParamDiffConstraints& c) { Get(c.bLeftAlign), Get(c.vecPairs); }
  template <typename A, typename B>
  void Get(std::pair<A, B>& p) {
    Get(p.first), Get(p.second);
  }
  // Entries are appended only once read whole, so what is allocated grows with
  // the bytes consumed, never with the count.
  template <typename T>
  void Get(std::vector<T>& list) {
    unsigned count = 0;
    Get(count);
    list.clear();
    for (unsigned i = 0; i < count && Good(); ++i) {
      T entry{};
      Get(entry);
      if (Good()) list.push_back(std::move(entry));
    }
  }
  template <typename V>
  void Get(std::map<unsigned, V>& map) {
    unsigned count = 0;
    Get(count);
    map.clear();
    for (unsigned i = 0; i < count && Good(); ++i) {
      unsigned key = 0;
      V value{};
      Get(key), Get(value);
      if (!map.empty() && key <= map.rbegin()->first) m_bOk = false;
      if (Good()) map.emplace_hint(map.end(), key, std::move(value));
    }
  }
  // A keyed list is looked up by binary search: its keys must ascend strictly.
  template <typename K, typename V>
  void GetKeyed(KeyedList<K, V>& list) {
    Get(list);
    for (std::size_t i = 1; i < list.size() && m_bOk; ++i)
      if (!(list[i - 1].first < list[i].first)) m_bOk = false;
  }

 private:
  LoadStream& m_in;
  bool m_bOk = true;
};

}  // namespace

std::string EncodeChartSnapshot(const FrozenChartData& d) {
  SaveStream out;
  out.InitMemStream(STREAM_VER_SAVE_LEGACY);
  Encoder e(out);
  e.Put(d.nVars), e.Put(d.bReassignValuesToMinMax), e.Put(d.wstrTitle), e.Put(d.wstrFooter);
  e.Put(d.nHighlightIndex), e.Put(d.m_vecvecHighlight);
  e.Put(d.m_mapObs), e.Put(d.m_mapDiscreteVar), e.Put(d.m_mapVarHeader), e.Put(d.m_mapParamType);
  e.Put(d.m_vecVarCase), e.Put(d.m_vecVarIndex), e.Put(d.m_vecVar1Var2), e.Put(d.m_vecVarValue);
  e.Put(d.m_vecAxisStatusParms), e.Put(d.m_mapParamConstraints);
  e.Put(d.m_mapParamDiffConstraints), e.Put(d.m_vecCompConstraintParms);
  e.Put(d.m_vecVarVecCases);
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

bool DecodeChartSnapshot(const std::string& bytes, FrozenChartData& d) {
  LoadStream in;
  try {
    in.InitMemStream(bytes);
  } catch (const std::exception&) {
    return false;  // not a stream at all
  }
  if (in.GetStreamVersion() != ORVEL_LEGACY) return false;
  Decoder g(in);
  g.Get(d.nVars), g.Get(d.bReassignValuesToMinMax), g.Get(d.wstrTitle), g.Get(d.wstrFooter);
  g.Get(d.nHighlightIndex), g.Get(d.m_vecvecHighlight);
  g.Get(d.m_mapObs), g.Get(d.m_mapDiscreteVar), g.Get(d.m_mapVarHeader), g.Get(d.m_mapParamType);
  g.GetKeyed(d.m_vecVarCase), g.GetKeyed(d.m_vecVarIndex), g.GetKeyed(d.m_vecVar1Var2);
  g.GetKeyed(d.m_vecVarValue), g.GetKeyed(d.m_vecAxisStatusParms), g.Get(d.m_mapParamConstraints);
  g.Get(d.m_mapParamDiffConstraints), g.GetKeyed(d.m_vecCompConstraintParms);
  g.GetKeyed(d.m_vecVarVecCases);
  if (!g.Good()) return false;
  char extra = 0;
  in >> extra;  // nothing may follow the last field
  return !in.good();
}

}  // namespace qvsysbase
