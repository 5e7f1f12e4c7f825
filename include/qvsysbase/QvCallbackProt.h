// Callback interfaces: objects the application hands to the library to be
// called back, such as the progress, text and user-abort callbacks of an abort
// channel. The invocation is each interface's first virtual operation.
//
//   class ProgressBar : public QvCallbackProt_1<void, int> {
//     void operator()(int percent) override { SetPos(percent); }
//   };
//
// Thread-safety: as the implementing class; the library calls a callback on the
// thread that uses the object it was handed to.
//
// Ownership: whoever hands a callback to the library keeps it alive for as long
// as it is in use; the library never deletes one.
#ifndef QVSYSBASE_QVCALLBACKPROT_H_
#define QVSYSBASE_QVCALLBACKPROT_H_

namespace qvsysbase {

// A callback without arguments, returning R.
template <typename R>
class QvCallbackProt {
 public:
  virtual R operator()() = 0;
  virtual ~QvCallbackProt() = default;
};

// A callback with one argument of type A, returning R.
template <typename R, typename A>
class QvCallbackProt_1 {
 public:
  virtual R operator()(A) = 0;
  virtual ~QvCallbackProt_1() = default;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_QVCALLBACKPROT_H_
