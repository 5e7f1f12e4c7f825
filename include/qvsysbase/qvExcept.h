// Exceptions and the assertion construct.
//
// Two families. Domain exceptions derive from the standard classes and carry a
// message (`what()`). `OrvelException` is the library's own root, deliberately
// not derived from std::exception: it records where it was raised (file, line,
// file revision, product version) and why. `AssertionException` adds the kind
// of contract that failed. Throw by value, catch by reference.
//
// Every check site of the library uses QV_ASSERT(condition). It stays active in
// release builds; when the condition is false it throws an AssertionException of
// type 0 (pre-condition) whose cause is the condition's source text exactly as
// written, whose file is the unit's name and whose revision is the unit's
// revision keyword.
//
// Thread-safety: the exception classes are values (intentionally copyable) and
// thread-compatible.
#ifndef QVSYSBASE_QVEXCEPT_H_
#define QVSYSBASE_QVEXCEPT_H_

#include <ostream>
#include <stdexcept>
#include <string>

#include "qvsysbase/Export.h"

namespace qvsysbase {

// The product version every OrvelException reports.
inline constexpr const char* kOrvelVersion = "12.00";

class QVSYSBASE_API ConstraintViolationException : public std::runtime_error {
 public:
  // what() is "ConstraintViolationException".
  ConstraintViolationException();
};

class QVSYSBASE_API NullException : public std::runtime_error {
 public:
  // what() is "NullException".
  NullException();
};

class QVSYSBASE_API InvalidValueException : public std::runtime_error {
 public:
  // what() is "InvalidValueException".
  InvalidValueException();
};

class QVSYSBASE_API ClipboardFormatException : public std::runtime_error {
 public:
  // what() is "ClipboardFormatException".
  ClipboardFormatException();
};

class QVSYSBASE_API CannotEstimateException : public std::runtime_error {
 public:
  // what() is "The model cannot be estimated".
  CannotEstimateException();
  explicit CannotEstimateException(const std::string& message);
};

// A sibling of CannotEstimateException, not a subclass of it.
class QVSYSBASE_API MulticollinearityException : public std::runtime_error {
 public:
  // details: which variables are collinear, as text prepared by the thrower.
  // initCollinearity: the collinearity was found in the initial design.
  MulticollinearityException(const std::string& message, const std::string& details,
                             bool initCollinearity);

  std::string getDetails() const;
  bool isInitCollinearity() const;

 private:
  std::string details;
  bool initCollinearity;
};

class QVSYSBASE_API Different_Dimensions_Exception : public std::logic_error {
 public:
  explicit Different_Dimensions_Exception(const std::string& message);
};

class QVSYSBASE_API dimset_out_of_range : public std::out_of_range {
 public:
  explicit dimset_out_of_range(const std::string& message);
};

// Root of the library's own exceptions. Not a std::exception: a handler for
// std::exception does not catch it.
class QVSYSBASE_API OrvelException {
 public:
  OrvelException(const std::string& cause, const std::string& file, int line,
                 const std::string& revision, const std::string& version);
  virtual ~OrvelException();
  OrvelException(const OrvelException&) = default;
  OrvelException& operator=(const OrvelException&) = default;

  // Writes five lines, each followed by a newline and a flush: the file, the
  // line, the revision, the version and, last, the cause.
  virtual void getDetails(std::ostream& os) const;
  virtual const std::string& getMessage() const;
  virtual const std::string& getFile() const;
  virtual int getLineNumber() const;
  virtual const std::string& getFileRevision() const;
  virtual const std::string& getOrvelVersion() const;

 private:
  std::string m_Message;
  std::string m_File;
  int m_Line;
  std::string m_Revision;
  std::string m_Version;
};

class QVSYSBASE_API AssertionException : public OrvelException {
 public:
  // Only the values 0, 1 and 2 have names; others report "Unknown". The fixed
  // underlying type makes any int a valid value.
  enum ASSERTION_TYPE : int { PRE_CONDITION = 0, POST_CONDITION = 1, INVARIANT = 2 };

  AssertionException(ASSERTION_TYPE type, const std::string& cause, const std::string& file,
                     int line, const std::string& revision, const std::string& version);
  ~AssertionException() override;
  AssertionException(const AssertionException&) = default;
  AssertionException& operator=(const AssertionException&) = default;

  // The five lines of OrvelException, then "Exception Type: " and the type.
  void getDetails(std::ostream& os) const override;
  // "Pre-condition", "Post-condition", "Invariant" or "Unknown".
  std::string getAssertionType() const;

 private:
  ASSERTION_TYPE m_Type;
};

// Throws std::bad_exception. Installed as the handler for unexpected exceptions,
// so that an exception escaping an exception specification arrives as one.
[[noreturn]] QVSYSBASE_API void qvUnexpected();

namespace detail {
// Builds and throws the pre-condition AssertionException of a failed check.
// Out of line so that every check site stays one compare and one jump.
[[noreturn]] QVSYSBASE_API void ThrowAssertion(const char* condition, const char* unit, int line,
                                               const char* revision);
}  // namespace detail

}  // namespace qvsysbase

// Declares the unit name and revision keyword that QV_ASSERT reports from this
// source file. Use once per .cpp, at namespace scope, outside any namespace:
//   QV_UNIT("SenderReceiver", "$Revision: #1 $")
#define QV_UNIT(name, revision)                         \
  namespace {                                           \
  [[maybe_unused]] constexpr const char* kQvUnitName = name;         \
  [[maybe_unused]] constexpr const char* kQvUnitRevision = revision; \
  }

// The check of a unit that declared QV_UNIT. Active in every build type.
#define QV_ASSERT(condition)                                                           \
  do {                                                                                 \
    if (!(condition)) [[unlikely]]                                                     \
      ::qvsysbase::detail::ThrowAssertion(#condition, kQvUnitName, __LINE__, kQvUnitRevision); \
  } while (false)

// The check inside a public header: the header's relative path stands for the unit.
#define QV_HEADER_ASSERT(condition, header, revision)                               \
  do {                                                                              \
    if (!(condition)) [[unlikely]]                                                  \
      ::qvsysbase::detail::ThrowAssertion(#condition, header, __LINE__, revision);  \
  } while (false)

#endif  // QVSYSBASE_QVEXCEPT_H_
