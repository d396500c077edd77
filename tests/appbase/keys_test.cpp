// Tests for soft keys, accelerators and menus, with keys and touch.

#include "QAccel.h"
#include "ZKbMainWidget.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "gui_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QSignalSpy>
#include <QToolButton>

using testing::ElementsAre;

namespace {

TEST(Accelerator, AcceptsQt2Codes) {
  struct Code {
    int code;
    Qt::Key key;
  };
  for (const Code& expected : {Code{0x1030, Qt::Key_F1}, Code{4146, Qt::Key_F3},
                               Code{0x1052, Qt::Key_F35}, Code{'A', Qt::Key_A}}) {
    QWidget window;
    QAccel accelerator(&window);
    accelerator.insertItem(expected.code, 7);
    const QSignalSpy activated(&accelerator, &QAccel::activated);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, expected.key);
    QTest::keyClick(&window, Qt::Key_F9);
    ASSERT_EQ(activated.count(), 1) << expected.code;
    EXPECT_EQ(activated.at(0).at(0).toInt(), 7);
  }
}

TEST(Accelerator, AssignsIds) {
  QWidget window;
  QAccel accelerator(&window);
  EXPECT_EQ(accelerator.insertItem('A'), 0);
  EXPECT_EQ(accelerator.insertItem('B'), 1);
  EXPECT_EQ(accelerator.insertItem('C', 9), 9);
  EXPECT_EQ(accelerator.insertItem('D'), 10);
}

// A screen with soft keys, and a label that a click clears.
class SoftKeys : public testing::Test {
protected:
  ZSoftKey* addKeys(const char* style) {
    auto* keys = new ZSoftKey(QString::fromLatin1(style), &screen_, "keys");
    screen_.setCSTWidget(keys);
    return keys;
  }
  void show() {
    screen_.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&screen_));
  }

  ZKbMainWidget screen_;
  QLabel target_;
};

TEST_F(SoftKeys, TwoOrThree) {
  ZSoftKey* two = addKeys("CST_2");
  for (const int position : {ZSoftKey::left, ZSoftKey::right, ZSoftKey::middle})
    two->setText(position, QStringLiteral("Text"));
  EXPECT_EQ(two->text(ZSoftKey::left), "Text");
  EXPECT_EQ(two->text(ZSoftKey::right), "Text");
  EXPECT_EQ(two->text(ZSoftKey::middle), "");
  ZSoftKey* three = addKeys("CST_3");
  three->setText(ZSoftKey::middle, QStringLiteral("Text"));
  EXPECT_EQ(three->text(ZSoftKey::middle), "Text");
  for (const int position : {-1, 3, 99}) {
    three->setText(position, QStringLiteral("Text"));
    EXPECT_EQ(three->text(position), "");
  }
}

TEST_F(SoftKeys, EachHasShortcutKey) {
  ZSoftKey* keys = addKeys("CST_3");
  std::vector<int> clicked;
  for (const int position : {ZSoftKey::left, ZSoftKey::right, ZSoftKey::middle}) {
    keys->setText(position, QStringLiteral("Text"));
    QObject::connect(keys->findChild<QToolButton*>(QStringLiteral("softkey%1").arg(position)),
                     &QToolButton::clicked, keys,
                     [&clicked, position] { clicked.push_back(position); });
  }
  show();
  for (const Qt::Key key : {Qt::Key_F1, Qt::Key_F2, Qt::Key_F3, Qt::Key_F4})
    QTest::keyClick(&screen_, key);
  EXPECT_THAT(clicked, ElementsAre(ZSoftKey::left, ZSoftKey::middle, ZSoftKey::right));
}

TEST_F(SoftKeys, AreOrderedFromLeftToRight) {
  ZSoftKey* keys = addKeys("CST_3");
  show();
  const auto x = [keys](int position) {
    return keys->findChild<QToolButton*>(QStringLiteral("softkey%1").arg(position))->x();
  };
  EXPECT_LT(x(ZSoftKey::left), x(ZSoftKey::middle));
  EXPECT_LT(x(ZSoftKey::middle), x(ZSoftKey::right));
  EXPECT_EQ(keys->geometry().bottom(), screen_.rect().bottom());
}

TEST_F(SoftKeys, AreDisabledWithoutText) {
  ZSoftKey* keys = addKeys("CST_2");
  keys->setClickedSlot(ZSoftKey::left, &target_, SLOT(clear()));
  target_.setText(QStringLiteral("full"));
  keys->click(ZSoftKey::left);
  EXPECT_EQ(target_.text(), "full");
  keys->setText(ZSoftKey::left, QStringLiteral("Clear"));
  keys->setKeyEnabled(ZSoftKey::left, false);
  keys->click(ZSoftKey::left);
  EXPECT_EQ(target_.text(), "full");
  keys->setKeyEnabled(ZSoftKey::left, true);
  keys->click(ZSoftKey::left);
  EXPECT_EQ(target_.text(), "");
}

TEST_F(SoftKeys, ClickCallsLastSlotSet) {
  ZSoftKey* keys = addKeys("CST_2");
  QLabel other(QStringLiteral("full"));
  target_.setText(QStringLiteral("full"));
  keys->setText(ZSoftKey::right, QStringLiteral("Clear"));
  keys->setClickedSlot(ZSoftKey::right, &other, SLOT(clear()));
  keys->setClickedSlot(ZSoftKey::right, &target_, SLOT(clear()));
  show();
  QTest::mouseClick(keys->findChild<QToolButton*>(QStringLiteral("softkey1")), Qt::LeftButton);
  EXPECT_EQ(target_.text(), "");
  EXPECT_EQ(other.text(), "full");
}

class TwoLevels : public ZOptMenuParser {
public:
  void fillItems(QValueList<ZOptMenuItem>& items, const QString& menu) override {
    if (menu != QLatin1String("menu"))
      return;
    items.append({QStringLiteral("One"), 11, 0, 0});
    items.append({QStringLiteral("More"), 7, 0, 0});
    items.append({QStringLiteral("Two"), 3, 7, 0});
    items.append({QStringLiteral("Three"), 5, 7, 0});
  }
};

class OptionsMenu : public testing::Test {
protected:
  QWidget window_;
  ZOptionsMenu menu_{&window_, "m", 0, 54, std::make_unique<TwoLevels>(), QStringLiteral("menu")};
};

TEST_F(OptionsMenu, HasItemsOfItsParser) {
  const QValueList<int> ids = menu_.getAllItemIds();
  EXPECT_THAT(std::vector<int>(ids.begin(), ids.end()), ElementsAre(11, 7, 3, 5));
  EXPECT_THAT(menu_.actions(), ElementsAre(menu_.item(11), menu_.item(7)));
  EXPECT_THAT(menu_.item(7)->menu()->actions(), ElementsAre(menu_.item(3), menu_.item(5)));
  EXPECT_EQ(menu_.item(4), nullptr);
  const ZOptionsMenu empty(&window_, nullptr, 0, 54, std::make_unique<TwoLevels>(),
                           QStringLiteral("other"));
  EXPECT_TRUE(empty.getAllItemIds().isEmpty());
}

TEST_F(OptionsMenu, ItemsCallTheirSlots) {
  QLabel target(QStringLiteral("full"));
  EXPECT_TRUE(menu_.connectItem(5, &target, SLOT(clear())));
  EXPECT_FALSE(menu_.connectItem(99, &target, SLOT(clear())));
  menu_.item(3)->trigger();
  EXPECT_EQ(target.text(), "full");
  menu_.item(5)->trigger();
  EXPECT_EQ(target.text(), "");
}

TEST_F(OptionsMenu, ShowsTextsLiterally) {
  EXPECT_TRUE(menu_.changeItem(3, QStringLiteral("Salt & pepper")));
  EXPECT_EQ(menu_.item(3)->text(), "Salt && pepper");
  EXPECT_TRUE(menu_.changeItem(7, QStringLiteral("Other")));
  EXPECT_EQ(menu_.item(7)->menu()->title(), "Other");
  EXPECT_FALSE(menu_.changeItem(99, QStringLiteral("x")));
}

TEST_F(OptionsMenu, BackClosesOneLevelAtATime) {
  window_.show();
  menu_.openAbove(&window_);
  QTest::keyClick(&menu_, Qt::Key_Down);
  QTest::keyClick(&menu_, Qt::Key_F1);
  QMenu* under = menu_.item(7)->menu();
  ASSERT_TRUE(under->isVisible());
  QTest::keyClick(under, Qt::Key_F3);
  EXPECT_FALSE(under->isVisible());
  EXPECT_TRUE(menu_.isVisible());
  QTest::keyClick(&menu_, Qt::Key_F3);
  EXPECT_FALSE(menu_.isVisible());
}

TEST_F(OptionsMenu, DisabledItemShowsReason) {
  menu_.enableItem(11, false, QStringLiteral("Not now & here"));
  EXPECT_FALSE(menu_.item(11)->isEnabled());
  ASSERT_EQ(menu_.actions().size(), 3);
  EXPECT_EQ(menu_.actions().at(1)->text(), "Not now && here");
  EXPECT_FALSE(menu_.actions().at(1)->isEnabled());
  // A new reason replaces the old one.
  menu_.enableItem(11, false, QStringLiteral("Never"));
  ASSERT_EQ(menu_.actions().size(), 3);
  EXPECT_EQ(menu_.actions().at(1)->text(), "Never");
  menu_.showItem(11, false);
  EXPECT_FALSE(menu_.item(11)->isVisible());
  EXPECT_FALSE(menu_.actions().at(1)->isVisible());
  menu_.enableItem(11, false, QStringLiteral("Never"));
  EXPECT_FALSE(menu_.actions().at(1)->isVisible());
  menu_.showItem(11, true);
  EXPECT_TRUE(menu_.actions().at(1)->isVisible());
  menu_.enableItem(11, true);
  EXPECT_TRUE(menu_.item(11)->isEnabled());
  EXPECT_THAT(menu_.actions(), ElementsAre(menu_.item(11), menu_.item(7)));
  menu_.enableItem(5, false);
  EXPECT_FALSE(menu_.item(5)->isEnabled());
  EXPECT_EQ(menu_.item(7)->menu()->actions().size(), 2);
}

TEST_F(OptionsMenu, ChecksItems) {
  menu_.checkItem(3, true);
  EXPECT_TRUE(menu_.item(3)->isChecked());
  menu_.checkItem(3, false);
  EXPECT_FALSE(menu_.item(3)->isChecked());
}

TEST_F(OptionsMenu, IsUpdatedBeforeItIsShown) {
  window_.show();
  QObject::connect(&menu_, &ZOptionsMenu::opening, [this] {
    EXPECT_FALSE(menu_.isVisible());
    menu_.showItem(11, false);
  });
  menu_.openAbove(&window_);
  EXPECT_TRUE(menu_.isVisible());
  // The first enabled item is current; its submenu stays closed.
  EXPECT_EQ(menu_.activeAction(), menu_.item(7));
  EXPECT_FALSE(menu_.item(7)->menu()->isVisible());
  QTest::keyClick(&menu_, Qt::Key_Return);
  EXPECT_TRUE(menu_.item(7)->menu()->isVisible());
}

}  // namespace
