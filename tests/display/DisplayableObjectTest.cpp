#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "qvsysbase/DisplayableObject.h"

namespace qvsysbase {
namespace {

// A grid whose title and footer lines are kept per view.
class TitledGrid : public DisplayableObject {
 public:
  void GetGridTitle(std::vector<std::wstring>& lines, unsigned view) const override {
    lines = Lines(m_titles, view);
  }
  void SetGridTitle(const std::vector<std::wstring>& lines, unsigned view) override {
    m_titles[view] = lines;
  }
  void GetGridFooter(std::vector<std::wstring>& lines, unsigned view) const override {
    lines = Lines(m_footers, view);
  }
  void SetGridFooter(const std::vector<std::wstring>& lines, unsigned view) override {
    m_footers[view] = lines;
  }
  std::map<unsigned, std::vector<std::wstring>> m_titles, m_footers;

 private:
  static std::vector<std::wstring> Lines(const std::map<unsigned, std::vector<std::wstring>>& m,
                                         unsigned view) {
    auto it = m.find(view);
    return it == m.end() ? std::vector<std::wstring>() : it->second;
  }
};

class CountingReceiver : public QvReceiver {
 public:
  void ObjectChanged(qvNotifyType::NotifyEnumType what, qvNotifyType::NotifyHintEnumType hint,
                     const QvSender* sender) override {
    m_events.push_back({what, hint});
    m_pSender = sender;
  }
  std::vector<std::pair<int, int>> m_events;
  const QvSender* m_pSender = nullptr;
};

TEST(DisplayableObjectTest, FireEventReachesReceiversOfTheOwnedSender) {
  TitledGrid object;
  QvSender* sender = object.GetSender();
  ASSERT_NE(sender, nullptr);
  EXPECT_EQ(object.GetSender(), sender);  // one sender for the object's life
  CountingReceiver view;
  view.AddSenderLink(sender);
  object.FireEvent(qvNotifyType::NT_DATA_CHANGED, qvNotifyType::NH_ALL);
  object.FireEvent(static_cast<qvNotifyType::NotifyEnumType>(77), qvNotifyType::NH_NONE);
  EXPECT_EQ(view.m_events, (std::vector<std::pair<int, int>>{{1, 1}, {77, 0}}));
  EXPECT_EQ(view.m_pSender, sender);
  EXPECT_FALSE(object.IsFrozenSnapshot());
}

TEST(DisplayableObjectTest, DestroyingTheObjectWithdrawsItsSender) {
  CountingReceiver view;
  {
    TitledGrid object;
    view.AddSenderLink(object.GetSender());
    EXPECT_TRUE(object.GetSender()->HasReceiver());
  }
  // A sender destroyed twice or leaked would show under the sanitizers; a live
  // link to it would make this receiver's destructor touch freed memory.
}

TEST(DisplayableObjectTest, EditStringSourcesReadAndWriteTheFirstLine) {
  TitledGrid grid;
  grid.m_titles[2] = {L"first", L"second", L"third"};
  grid.m_footers[0] = {std::wstring(L"foot\0hidden", 11)};
  DOEditStringSource title(&grid, DOEditStringSource::Title, 2);
  DOEditStringSource footer(&grid, DOEditStringSource::Footer, 0);
  DOEditStringSource inert(&grid, static_cast<DOEditStringSource::StringType>(5), 2);
  DOEditStringSource emptyTitle(&grid, DOEditStringSource::Title, 1);

  EXPECT_EQ(title.getString(), L"first");
  EXPECT_EQ(footer.getString(), L"foot");  // ends at the first null
  EXPECT_EQ(inert.getString(), L"");
  EXPECT_EQ(emptyTitle.getString(), L"");
  EXPECT_EQ(title.getTitle(), L"Title");
  EXPECT_EQ(footer.getTitle(), L"Footer");
  EXPECT_EQ(inert.getTitle(), L"");
  EXPECT_EQ(title.getLabel() + title.getHint() + footer.getLabel() + footer.getHint(), L"");

  title.setString(L"x");
  EXPECT_EQ(grid.m_titles[2], std::vector<std::wstring>{L"x"});
  footer.setString(L"new");
  EXPECT_EQ(grid.m_footers[0], std::vector<std::wstring>{L"new"});
  inert.setString(L"ignored");
  EXPECT_EQ(grid.m_titles[2], std::vector<std::wstring>{L"x"});
  EXPECT_EQ(grid.m_footers.size(), 1u);
}

}  // namespace
}  // namespace qvsysbase
