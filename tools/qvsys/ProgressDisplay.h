// Shows an Aborter's progress and step texts: a redrawn bar on a terminal, plain
// lines otherwise (a log or a pipe).
#ifndef QVSYS_PROGRESSDISPLAY_H_
#define QVSYS_PROGRESSDISPLAY_H_

#include <qvsysbase/qvsysbase.h>

#include <cstdio>
#include <string>

namespace qvsys {

class ProgressDisplay {
 public:
  explicit ProgressDisplay(std::FILE* out);
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;
  // Connects both callbacks to `aborter`; the display must outlive its use.
  void Attach(qvsysbase::Aborter& aborter);

 private:
  class Progress : public qvsysbase::QvCallbackProt_1<void, int> {
   public:
    explicit Progress(ProgressDisplay& owner) : m_owner(owner) {}
    void operator()(int percent) override;

   private:
    ProgressDisplay& m_owner;
  };
  class Text : public qvsysbase::QvCallbackProt_1<void, const std::wstring&> {
   public:
    explicit Text(ProgressDisplay& owner) : m_owner(owner) {}
    void operator()(const std::wstring& text) override;

   private:
    ProgressDisplay& m_owner;
  };

  void Draw();

  std::FILE* m_out;
  bool m_bTerminal;
  int m_nPercent = 0;
  std::string m_strText;
  Progress m_progress{*this};
  Text m_text{*this};
};

}  // namespace qvsys

#endif  // QVSYS_PROGRESSDISPLAY_H_
