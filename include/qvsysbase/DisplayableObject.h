// Displayable objects and edit-string sources.
//
// A DisplayableObject is the one object through which the application shows a
// result both as a grid and as a chart: it is a GenericGridObject (first base)
// and a GenericChartObject (second base), and owns the QvSender through which
// the views that show it learn of changes. A DOEditStringSource is the small
// adapter a text-editing dialog uses to read and write a grid's title or
// footer.
//
// Thread-safety: thread-compatible (the sender's registry is not locked).
//
// Ownership: a DisplayableObject owns its sender for its whole life and is
// therefore not copyable. A DOEditStringSource does not own its grid, which
// must outlive it.
#ifndef QVSYSBASE_DISPLAYABLEOBJECT_H_
#define QVSYSBASE_DISPLAYABLEOBJECT_H_

#include <string>

#include "qvsysbase/Export.h"
#include "qvsysbase/GenericChartObject.h"
#include "qvsysbase/GenericGridObject.h"
#include "qvsysbase/SenderReceiver.h"

namespace qvsysbase {

class QVSYSBASE_API DisplayableObject : public GenericGridObject, public GenericChartObject {
 public:
  // Constructs both bases, then the sender.
  DisplayableObject();
  DisplayableObject(const DisplayableObject&) = delete;
  DisplayableObject& operator=(const DisplayableObject&) = delete;
  // Deletes the sender, then the bases are destroyed.
  ~DisplayableObject() override;

  // The owned sender; views link themselves to it.
  QvSender* GetSender() const override;
  // Passes both values unchanged to the sender, which tells every receiver.
  virtual void FireEvent(qvNotifyType::NotifyEnumType what, qvNotifyType::NotifyHintEnumType hint);

  // An ordinary displayable object answers live: false.
  bool IsFrozenSnapshot() const override;

 private:
  QvSender* m_pSender;
};

// What a text-editing dialog reads and writes. No virtual destructor: the
// dialog never owns its source, so the destructor is protected.
class QVSYSBASE_API EditStringSource {
 public:
  virtual std::wstring getString() const = 0;  // the current text
  virtual std::wstring getTitle() const = 0;   // the caption of the edit box
  virtual std::wstring getLabel() const = 0;   // a label beside the edit box
  virtual std::wstring getHint() const;        // empty
  virtual void setString(const wchar_t* text) = 0;

 protected:
  EditStringSource() = default;
  EditStringSource(const EditStringSource&) = default;
  EditStringSource& operator=(const EditStringSource&) = default;
  ~EditStringSource() = default;
};

// The title or footer of one view of a grid, as one line of text. Any other
// string type makes the source inert: empty texts, writes ignored.
// Intentionally copyable (it holds only the grid's address).
class QVSYSBASE_API DOEditStringSource : public EditStringSource {
 public:
  enum StringType : int { Title = 0, Footer = 1 };

  // `grid` is not owned; no check is made.
  DOEditStringSource(GenericGridObject* grid, StringType type, unsigned view);
  virtual ~DOEditStringSource() = default;

  // The first line of the title or footer (further lines are not shown in the
  // one-line edit box); empty when there is none.
  std::wstring getString() const override;
  // "Title", "Footer" or empty.
  std::wstring getTitle() const override;
  std::wstring getLabel() const override;  // empty
  // Replaces the whole title or footer with the one line `text`.
  void setString(const wchar_t* text) override;

 private:
  GenericGridObject* m_pGrid;
  StringType m_nType;
  unsigned m_nView;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_DISPLAYABLEOBJECT_H_
