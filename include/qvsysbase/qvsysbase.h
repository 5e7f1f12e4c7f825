// Umbrella header: includes every public header of the library.
#ifndef QVSYSBASE_QVSYSBASE_H_
#define QVSYSBASE_QVSYSBASE_H_

#include "qvsysbase/CriticalSection.h"
#include "qvsysbase/Cypher.h"
#include "qvsysbase/Export.h"
#include "qvsysbase/GroupDestructor.h"
#include "qvsysbase/KernelErrorReport.h"
#include "qvsysbase/qvExcept.h"

#endif  // QVSYSBASE_QVSYSBASE_H_
