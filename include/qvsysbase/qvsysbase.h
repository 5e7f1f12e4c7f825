// Umbrella header: includes every public header of the library.
#ifndef QVSYSBASE_QVSYSBASE_H_
#define QVSYSBASE_QVSYSBASE_H_

#include "qvsysbase/Export.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/KernelErrorReport.h"
#include "qvsysbase/qvExcept.h"

#endif  // QVSYSBASE_QVSYSBASE_H_
