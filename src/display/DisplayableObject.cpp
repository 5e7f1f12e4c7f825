// Displayable objects: the owned sender and the edit-string source of a grid's
// title or footer.
#include "qvsysbase/DisplayableObject.h"

#include <vector>

namespace qvsysbase {

DisplayableObject::DisplayableObject() : m_pSender(new QvSender) {}

DisplayableObject::~DisplayableObject() { delete m_pSender; }

QvSender* DisplayableObject::GetSender() const { return m_pSender; }

void DisplayableObject::FireEvent(qvNotifyType::NotifyEnumType what,
                                  qvNotifyType::NotifyHintEnumType hint) {
  m_pSender->FireEvent(what, hint);
}

bool DisplayableObject::IsFrozenSnapshot() const { return false; }

std::wstring EditStringSource::getHint() const { return {}; }

DOEditStringSource::DOEditStringSource(GenericGridObject* grid, StringType type, unsigned view)
    : m_pGrid(grid), m_nType(type), m_nView(view) {}

std::wstring DOEditStringSource::getString() const {
  std::vector<std::wstring> lines;
  if (m_nType == Title) m_pGrid->GetGridTitle(lines, m_nView);
  if (m_nType == Footer) m_pGrid->GetGridFooter(lines, m_nView);
  // Built from the character data, so the text ends at its first null.
  return lines.empty() ? std::wstring() : std::wstring(lines.front().c_str());
}

std::wstring DOEditStringSource::getTitle() const {
  if (m_nType == Title) return L"Title";
  if (m_nType == Footer) return L"Footer";
  return {};
}

std::wstring DOEditStringSource::getLabel() const { return {}; }

void DOEditStringSource::setString(const wchar_t* text) {
  const std::vector<std::wstring> lines{std::wstring(text)};
  if (m_nType == Title) m_pGrid->SetGridTitle(lines, m_nView);
  if (m_nType == Footer) m_pGrid->SetGridFooter(lines, m_nView);
}

}  // namespace qvsysbase
