// The stream form of a frozen chart, shared by the writer and the reader of
// FreezableObject's snapshot record.
//
// These bytes are a promise to every saved chart: the layout below is never
// changed in place; a new layout raises kRecordMajor and the reader keeps a
// branch for every older one.
//
// Record (one object record of the stream format)
//   class name  "qvsysbase::FrozenChartData", versions kRecordMajor.kRecordMinor
//   body        bool    frozen
//               string  snapshot: a byte string (4-byte length, then the bytes)
//                       holding a whole legacy-form stream (5-byte header
//                       3A 01 01 00 00, then the fields below as plain values);
//                       empty when not frozen
//   Why a nested stream: a count read from a damaged record could otherwise
//   drive reads past the record's close marker, which the reader treats as a
//   broken contract, not as bad data. The string's length is checked against
//   the record before anything is allocated, and every read inside the nested
//   stream fails softly at its end, so a damaged snapshot only fails the read.
//
// Snapshot fields, in order (int, unsigned, bool, double and wide strings in
// the stream's plain encodings: 4, 4, 4, 8 bytes, UTF-16LE with a byte count)
//   int nVars, bool bReassignValuesToMinMax, wstring wstrTitle,
//   wstring wstrFooter, int nHighlightIndex
//   list  m_vecvecHighlight        each a list of unsigned
//   map   m_mapObs                 int
//   map   m_mapDiscreteVar         bool
//   map   m_mapVarHeader           wstring
//   map   m_mapParamType           int
//   klist m_vecVarCase             (var, case) -> bool valid, bool connected,
//                                  double value, wstring text, int status,
//                                  int colour, bool marked, bool labelMajor,
//                                  wstring label, wstring hint
//   klist m_vecVarIndex            (var, index) -> bool, wstring
//   klist m_vecVar1Var2            (var1, var2) -> wstring
//   klist m_vecVarValue            (var, value) -> double
//   klist m_vecAxisStatusParms     (unsigned type, unsigned axisPos, double posn,
//                                   unsigned var) -> double
//   map   m_mapParamConstraints    bool leftAlign, list of (unsigned, unsigned)
//   map   m_mapParamDiffConstraints bool leftAlign, list of
//                                  ((unsigned, unsigned), (unsigned, unsigned))
//   klist m_vecCompConstraintParms (double posn, unsigned var, bool alpha) ->
//                                  int, wstring
//   klist m_vecVarVecCases         (unsigned var, list of unsigned) -> double,
//                                  wstring label, wstring hint
//   where  list  = unsigned count n, then n elements
//          map   = unsigned count n, then n (unsigned key, value) with keys
//                  strictly ascending
//          klist = unsigned count n, then n (key, value) with keys strictly
//                  ascending
//   Nothing follows the last field.
#ifndef QVSYSBASE_SRC_DISPLAY_FROZENCHARTFORMAT_H_
#define QVSYSBASE_SRC_DISPLAY_FROZENCHARTFORMAT_H_

namespace qvsysbase::frozenchartformat {

inline constexpr const char* kClassName = "qvsysbase::FrozenChartData";
inline constexpr int kRecordMajor = 1;
inline constexpr int kRecordMinor = 0;

}  // namespace qvsysbase::frozenchartformat

#endif  // QVSYSBASE_SRC_DISPLAY_FROZENCHARTFORMAT_H_
