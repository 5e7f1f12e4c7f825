// QVSYSBASE_API marks what the library exports. Everything else is hidden, so the
// shared library's interface is exactly the set of names carrying this macro.
#ifndef QVSYSBASE_EXPORT_H_
#define QVSYSBASE_EXPORT_H_

#if defined(QVSYSBASE_STATIC)
#define QVSYSBASE_API
#elif defined(_WIN32)
#if defined(QVSYSBASE_BUILDING)
#define QVSYSBASE_API __declspec(dllexport)
#else
#define QVSYSBASE_API __declspec(dllimport)
#endif
#else
#define QVSYSBASE_API __attribute__((visibility("default")))
#endif

#endif  // QVSYSBASE_EXPORT_H_
