#include "ProgressDisplay.h"

#include <unistd.h>

namespace qvsys {
namespace {
constexpr int kBarWidth = 30;
}

ProgressDisplay::ProgressDisplay(std::FILE* out) : m_out(out), m_bTerminal(isatty(fileno(out))) {}

void ProgressDisplay::Attach(qvsysbase::Aborter& aborter) {
  aborter.SetProgressCallback(&m_progress);
  aborter.SetChangeTextCallback(&m_text);
}

void ProgressDisplay::Progress::operator()(int percent) {
  m_owner.m_nPercent = percent;
  m_owner.Draw();
}

void ProgressDisplay::Text::operator()(const std::wstring& text) {
  // The step names are ASCII; anything else is shown as '?'.
  m_owner.m_strText.clear();
  for (wchar_t c : text) m_owner.m_strText += (c >= 0x20 && c < 0x7F) ? static_cast<char>(c) : '?';
}

void ProgressDisplay::Draw() {
  if (!m_bTerminal) {
    std::fprintf(m_out, "  [%3d%%] %s\n", m_nPercent, m_strText.c_str());
    return;
  }
  const int filled = m_nPercent * kBarWidth / 100;
  std::fprintf(m_out, "\r  [%.*s%*s] %3d%% %-40s", filled, "##############################",
               kBarWidth - filled, "", m_nPercent, m_strText.c_str());
  if (m_nPercent >= 100) std::fputc('\n', m_out);
  std::fflush(m_out);
}

}  // namespace qvsys
