// Umbrella header: includes every public header of the library.
#ifndef QVSYSBASE_QVSYSBASE_H_
#define QVSYSBASE_QVSYSBASE_H_

#include "qvsysbase/CellValue.h"
#include "qvsysbase/Export.h"
#include "qvsysbase/KernelErrorReport.h"
#include "qvsysbase/QvLocaleUtil.h"
#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "qvsysbase/qvmath.h"

#endif  // QVSYSBASE_QVSYSBASE_H_
