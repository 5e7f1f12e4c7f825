// Taking a chart's snapshot, and writing and reading one as bytes.
#ifndef QVSYSBASE_SRC_DISPLAY_CHARTSNAPSHOT_H_
#define QVSYSBASE_SRC_DISPLAY_CHARTSNAPSHOT_H_

#include <string>

#include "qvsysbase/GenericChartObject.h"

namespace qvsysbase {

// Asks `chart` every question a view may ask, over the ranges listed in
// FreezableObject.h, and keeps the answers. A null chart gives an empty snapshot.
FrozenChartData TakeChartSnapshot(const GenericChartObject* chart);

// The snapshot encoded as described in FrozenChartFormat.h.
std::string EncodeChartSnapshot(const FrozenChartData& data);
// Decodes what EncodeChartSnapshot wrote; false (and `data` unspecified) for
// bytes that are not a whole, well-formed snapshot.
bool DecodeChartSnapshot(const std::string& bytes, FrozenChartData& data);

}  // namespace qvsysbase

#endif  // QVSYSBASE_SRC_DISPLAY_CHARTSNAPSHOT_H_
