// What concerns every facility of the string utilities: the user's settings.
// The facilities themselves are units of their own (StringEditing,
// PatternReplacement, CaseTables, TextPaths, CommonSegments,
// CodePageConversion, UserNumbers, ClipboardMatrix).
#include "qvsysbase/QvStringUtil.h"

#include "text/UserLocale.h"

namespace qvsysbase {

void QvStringUtil::SettingChanged() { detail::RereadUserLocale(); }

}  // namespace qvsysbase
