#include "qvsysbase/qvExcept.h"

#include <exception>

namespace qvsysbase {

namespace {
constexpr const char* kConstraintViolationText = "ConstraintViolationException";
constexpr const char* kNullText = "NullException";
constexpr const char* kInvalidValueText = "InvalidValueException";
constexpr const char* kClipboardFormatText = "ClipboardFormatException";
constexpr const char* kCannotEstimateText = "The model cannot be estimated";

// Every label is followed by its value, a newline and a flush, so that a report
// interrupted by a crash still shows the lines already written.
void WriteLine(std::ostream& os, const char* label, const std::string& value) {
  os << label << value << '\n' << std::flush;
}
}  // namespace

ConstraintViolationException::ConstraintViolationException()
    : std::runtime_error(kConstraintViolationText) {}
NullException::NullException() : std::runtime_error(kNullText) {}
InvalidValueException::InvalidValueException() : std::runtime_error(kInvalidValueText) {}
ClipboardFormatException::ClipboardFormatException()
    : std::runtime_error(kClipboardFormatText) {}
CannotEstimateException::CannotEstimateException() : std::runtime_error(kCannotEstimateText) {}
CannotEstimateException::CannotEstimateException(const std::string& message)
    : std::runtime_error(message) {}

MulticollinearityException::MulticollinearityException(const std::string& message,
                                                       const std::string& details,
                                                       bool initCollinearity)
    : std::runtime_error(message), details(details), initCollinearity(initCollinearity) {}
std::string MulticollinearityException::getDetails() const { return details; }
bool MulticollinearityException::isInitCollinearity() const { return initCollinearity; }

Different_Dimensions_Exception::Different_Dimensions_Exception(const std::string& message)
    : std::logic_error(message) {}
dimset_out_of_range::dimset_out_of_range(const std::string& message)
    : std::out_of_range(message) {}

OrvelException::OrvelException(const std::string& cause, const std::string& file, int line,
                               const std::string& revision, const std::string& version)
    : m_Message(cause), m_File(file), m_Line(line), m_Revision(revision), m_Version(version) {}
OrvelException::~OrvelException() = default;

void OrvelException::getDetails(std::ostream& os) const {
  WriteLine(os, "Exception occurred in file: ", m_File);
  os << "Line number: " << m_Line << '\n' << std::flush;
  WriteLine(os, "Revision Number: ", m_Revision);
  WriteLine(os, "ORVEL Version: ", m_Version);
  WriteLine(os, "Cause: ", m_Message);
}
const std::string& OrvelException::getMessage() const { return m_Message; }
const std::string& OrvelException::getFile() const { return m_File; }
int OrvelException::getLineNumber() const { return m_Line; }
const std::string& OrvelException::getFileRevision() const { return m_Revision; }
const std::string& OrvelException::getOrvelVersion() const { return m_Version; }

AssertionException::AssertionException(ASSERTION_TYPE type, const std::string& cause,
                                       const std::string& file, int line,
                                       const std::string& revision, const std::string& version)
    : OrvelException(cause, file, line, revision, version), m_Type(type) {}
AssertionException::~AssertionException() = default;

void AssertionException::getDetails(std::ostream& os) const {
  OrvelException::getDetails(os);
  WriteLine(os, "Exception Type: ", getAssertionType());
}

std::string AssertionException::getAssertionType() const {
  switch (static_cast<int>(m_Type)) {
    case PRE_CONDITION: return "Pre-condition";
    case POST_CONDITION: return "Post-condition";
    case INVARIANT: return "Invariant";
    default: return "Unknown";
  }
}

void qvUnexpected() { throw std::bad_exception(); }

namespace detail {
void ThrowAssertion(const char* condition, const char* unit, int line, const char* revision) {
  // Every check site reports a pre-condition, also where the condition is a
  // post-condition in substance: callers match on the type.
  throw AssertionException(AssertionException::PRE_CONDITION, condition, unit, line, revision,
                           kOrvelVersion);
}
}  // namespace detail

}  // namespace qvsysbase
