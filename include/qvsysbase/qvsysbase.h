// Umbrella header: includes every public header of the library.
#ifndef QVSYSBASE_QVSYSBASE_H_
#define QVSYSBASE_QVSYSBASE_H_

#include "qvsysbase/Aborter.h"
#include "qvsysbase/CellValue.h"
#include "qvsysbase/CriticalSection.h"
#include "qvsysbase/Cypher.h"
#include "qvsysbase/Export.h"
#include "qvsysbase/GenericGridObject.h"
#include "qvsysbase/GridSelections.h"
#include "qvsysbase/GroupDestructor.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/KernelErrorReport.h"
#include "qvsysbase/LbVector.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/nspSmartPtr.h"
#include "qvsysbase/OSExceptions.h"
#include "qvsysbase/QvCallbackProt.h"
#include "qvsysbase/qvExcept.h"
#include "qvsysbase/QvLocaleUtil.h"
#include "qvsysbase/qvmath.h"
#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/RandomStreams.h"
#include "qvsysbase/RefCounterProt.h"
#include "qvsysbase/SaveStream.h"
#include "qvsysbase/SenderReceiver.h"
#include "qvsysbase/SplittingInformation.h"
#include "qvsysbase/StreamStructure.h"
#include "qvsysbase/StreamObject.h"

#endif  // QVSYSBASE_QVSYSBASE_H_
