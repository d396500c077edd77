// Tests for the content and layout of texts, rows and dialogs.

#include "RES_ICON_Reader.h"
#include "ZDetailView.h"
#include "ZKbMainWidget.h"
#include "ZMessageDlg.h"
#include "ZSoftKey.h"
#include "ZWrappedText.h"
#include "gui_test.h"
#include "log_capture.h"
#include "screen_reader_probe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

#include <vector>

namespace {

int linesOf(const QString& text, int width) {
  const ZWrappedText widget(text);
  return widget.heightForWidth(width) / QFontMetrics(widget.font()).height();
}

TEST(WrappedText, UsesAsManyLinesAsNeeded) {
  EXPECT_EQ(linesOf(QString(), 100), 1);
  EXPECT_EQ(linesOf(QStringLiteral("word"), 100), 1);
  EXPECT_GT(linesOf(QStringLiteral("some words in a row that is too long"), 100), 2);
  EXPECT_GT(linesOf(QString(100, u'x'), 100), 5) << "a long word is wrapped inside";
  EXPECT_GT(linesOf(QString(100, QChar(0x4E2D)), 100), 5);
}

TEST(WrappedText, RecognizesEveryLineEnd) {
  for (const char* text : {"a\nb", "a\r\nb", "a\rb"})
    EXPECT_EQ(linesOf(QString::fromLatin1(text), 100), 2) << text;
  EXPECT_EQ(linesOf(QStringLiteral("a\n\nb\n"), 100), 4);
}

TEST(WrappedText, ShowsMarkupAndControlCharactersAsText) {
  const ZWrappedText markup(QStringLiteral("<b>a</b>"));
  EXPECT_GT(markup.widthOnOneLine(), ZWrappedText(QStringLiteral("a")).widthOnOneLine() * 4);
  EXPECT_EQ(linesOf(QStringLiteral("a\tb\x01\x0B\x7F"), 100), 1);
  EXPECT_EQ(markup.text(), "<b>a</b>");
}

class DetailRows : public testing::Test {
protected:
  ZDetailItem* add(const QString& label, const QString& text) {
    auto* item = new ZDetailItem(ZDetailItem::text, label);
    item->appendTextIconRow(text);
    rows_.addItem(item);
    return item;
  }
  void show(int width, int height) {
    rows_.resize(width, height);
    rows_.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&rows_));
    rows_.setFocus();
  }
  // Returns the position of the row on the screen.
  QRect place(int row) {
    const ZDetailItem* item = rows_.item(row);
    return {item->mapTo(rows_.viewport(), QPoint(0, 0)), item->size()};
  }

  ZDetailView rows_{nullptr, nullptr, 72};
};

TEST_F(DetailRows, ContainAppendedItems) {
  ZDetailItem* item = add(QStringLiteral("Label:"), QStringLiteral("one"));
  QPixmap icon(16, 16);
  icon.fill(Qt::red);
  item->appendTextIconRow(QStringLiteral("two"), icon, true);
  EXPECT_EQ(item->label(), "Label:");
  EXPECT_EQ(item->content(), "one\ntwo");
  EXPECT_EQ(item->icon().cacheKey(), icon.cacheKey());
  EXPECT_EQ(item->kind(), 5);
  EXPECT_EQ(rows_.item(0), item);
  EXPECT_EQ(rows_.item(1), nullptr);
  EXPECT_EQ(rows_.item(-1), nullptr);
}

TEST_F(DetailRows, AnnounceCurrentRowToScreenReaders) {
  const ScreenReader reader;
  add(QStringLiteral("Title:"), QStringLiteral("Buy milk"));
  add(QStringLiteral("Status:"), QStringLiteral("Incomplete"));
  show(240, 320);
  ASSERT_TRUE(
      QTest::qWaitFor([&] { return reader.last(QAccessible::Focus).name == "Title: Buy milk"; }));
  QTest::keyClick(&rows_, Qt::Key_Down);
  EXPECT_EQ(reader.last(QAccessible::Focus).name, "Status: Incomplete");
  EXPECT_EQ(reader.last(QAccessible::Focus).role, QAccessible::ListItem);
  EXPECT_TRUE(reader.last(QAccessible::Focus).state.selected);

  QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&rows_);
  EXPECT_EQ(list->role(), QAccessible::List);
  ASSERT_EQ(list->childCount(), 2);
  EXPECT_EQ(list->focusChild(), list->child(1));
  EXPECT_EQ(list->indexOfChild(list->child(1)), 1);
  EXPECT_EQ(list->child(1)->parent(), list);
  EXPECT_TRUE(list->child(1)->state().focused);
  EXPECT_FALSE(list->child(0)->state().focused);
  EXPECT_FALSE(list->child(0)->state().selected);
}

TEST_F(DetailRows, IconIsCenteredOrAtTopOfText) {
  QPixmap icon(8, 8);
  icon.fill(Qt::red);
  for (const bool centered : {true, false}) {
    auto* item = new ZDetailItem(ZDetailItem::textWithIcon, QStringLiteral("Label:"));
    item->appendTextIconRow(QString(60, u'n'), icon, centered);
    rows_.addItem(item);
  }
  show(240, 320);
  const auto top = [this](int row) { return rows_.item(row)->findChild<QLabel*>()->y(); };
  EXPECT_GT(top(0), 5);
  EXPECT_EQ(top(1), 0);
}

TEST_F(DetailRows, LabelsAreBesideOrAbove) {
  add(QStringLiteral("Label:"), QStringLiteral("content"));
  const auto contentIsBeside = [this] {
    // QObject::findChildren cannot select a class without Q_OBJECT.
    std::vector<const ZWrappedText*> texts;
    for (const auto* child : rows_.item(0)->findChildren<QWidget*>()) {
      if (const auto* text = dynamic_cast<const ZWrappedText*>(child))
        texts.push_back(text);
    }
    const QPoint label = texts.at(0)->mapTo(&rows_, QPoint(0, 0));
    const QPoint content = texts.at(1)->mapTo(&rows_, QPoint(0, 0));
    return content.x() > label.x();
  };
  show(240, 320);
  EXPECT_TRUE(contentIsBeside());
  rows_.resize(120, 320);
  QTest::qWait(0);
  EXPECT_FALSE(contentIsBeside());
}

TEST_F(DetailRows, KeysMoveThroughRows) {
  for (int i = 0; i < 5; ++i)
    add(QStringLiteral("Label:"), QStringLiteral("content"));
  show(240, 320);
  EXPECT_EQ(rows_.currentRow(), 0);
  QTest::keyClick(&rows_, Qt::Key_Up);
  EXPECT_EQ(rows_.currentRow(), 0);
  for (int i = 0; i < 9; ++i)
    QTest::keyClick(&rows_, Qt::Key_Down);
  EXPECT_EQ(rows_.currentRow(), 4);
  QTest::keyClick(&rows_, Qt::Key_Up);
  EXPECT_EQ(rows_.currentRow(), 3);
}

TEST_F(DetailRows, LongRowScrolls) {
  add(QStringLiteral("Label:"), QStringLiteral("first"));
  add(QStringLiteral("Label:"), QString(4002, u'n'));
  add(QStringLiteral("Label:"), QStringLiteral("last"));
  show(240, 200);
  QTest::keyClick(&rows_, Qt::Key_Down);
  ASSERT_EQ(rows_.currentRow(), 1);
  // Each step scrolls further, down to the end.
  int steps = 0;
  for (int bottom = place(1).bottom(); rows_.currentRow() == 1; bottom = place(1).bottom()) {
    QTest::keyClick(&rows_, Qt::Key_Down);
    if (rows_.currentRow() == 1) {
      ASSERT_LT(place(1).bottom(), bottom);
    }
    ASSERT_LT(++steps, 500);
  }
  EXPECT_GT(steps, 5);
  EXPECT_LE(place(2).bottom(), rows_.viewport()->height());
  for (int i = 0; i < 500 && rows_.currentRow() > 0; ++i)
    QTest::keyClick(&rows_, Qt::Key_Up);
  EXPECT_EQ(place(0).top(), 0);
}

TEST_F(DetailRows, TouchMakesRowCurrent) {
  for (int i = 0; i < 3; ++i)
    add(QStringLiteral("Label:"), QStringLiteral("content"));
  show(240, 320);
  QTest::mouseClick(rows_.item(2), Qt::LeftButton);
  EXPECT_EQ(rows_.currentRow(), 2);
}

TEST_F(DetailRows, AreNotWiderThanScreen) {
  add(QString(30, u'L'), QString(200, u'W'));
  show(120, 160);
  EXPECT_LE(rows_.widget()->width(), rows_.viewport()->width());
}

TEST(MainWidget, OwnsItsContent) {
  auto* screen = new ZKbMainWidget(nullptr, "name", 0);
  EXPECT_EQ(screen->objectName(), "name");
  QPointer<QWidget> first = new QWidget;
  QPointer<QWidget> second = new QWidget;
  screen->setContentWidget(first);
  screen->setContentWidget(second);
  EXPECT_TRUE(first.isNull());
  EXPECT_EQ(screen->contentWidget(), second);
  delete screen;
  EXPECT_TRUE(second.isNull());
}

TEST(MainWidget, LongTitleDoesNotWidenIt) {
  ZKbMainWidget screen;
  const int before = screen.minimumSizeHint().width();
  screen.setAppTitle(QString(512, u'W') + u'\n');
  EXPECT_EQ(screen.minimumSizeHint().width(), before);
  EXPECT_EQ(screen.appTitle(), QString(512, u'W') + u'\n');
}

// Returns the result of a dialog in which a key is pressed. `seen` is called first.
int resultOf(ZPopup& dialog, Qt::Key key, const std::function<void()>& seen = {}) {
  QTimer::singleShot(0, &dialog, [&] {
    static_cast<void>(QTest::qWaitForWindowActive(&dialog));
    if (seen)
      seen();
    QTest::keyClick(&dialog, key);
  });
  return dialog.exec();
}

TEST(MessageDialog, EachKeyClosesIt) {
  for (const Qt::Key key : {Qt::Key_F1, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Select}) {
    ZMessageDlg dialog(QStringLiteral("Title"), QStringLiteral("Text"), ZMessageDlg::message);
    EXPECT_EQ(dialog.keys()->text(ZSoftKey::left), "OK");
    EXPECT_EQ(dialog.keys()->text(ZSoftKey::right), "");
    EXPECT_EQ(resultOf(dialog, key), QDialog::Accepted) << key;
  }
  ZMessageDlg dialog(QStringLiteral("Title"), QStringLiteral("Text"), ZMessageDlg::message);
  EXPECT_EQ(resultOf(dialog, Qt::Key_Escape), QDialog::Rejected);
}

TEST(MessageDialog, QuestionHasTwoAnswers) {
  ZMessageDlg yes(QStringLiteral("Title"), QStringLiteral("Text"), ZMessageDlg::question);
  EXPECT_EQ(resultOf(yes, Qt::Key_F1), QDialog::Accepted);
  ZMessageDlg no(QStringLiteral("Title"), QStringLiteral("Text"), ZMessageDlg::question);
  EXPECT_EQ(resultOf(no, Qt::Key_F3), QDialog::Rejected);
}

TEST(MessageDialog, FitsWindow) {
  for (const int length : {10, 100, 1000, 10000}) {
    QWidget window;
    window.setGeometry(0, 0, 240, 320);
    window.show();
    ZMessageDlg dialog(QString(length, u'T'), QString(length, u'x'), ZMessageDlg::message, &window);
    resultOf(dialog, Qt::Key_F1, [&] {
      EXPECT_TRUE(window.geometry().contains(dialog.geometry())) << length;
      const auto* scroll = dialog.findChild<QScrollArea*>();
      // A short text is completely visible.
      EXPECT_EQ(scroll->verticalScrollBar()->maximum() > 0, length >= 1000) << length;
      EXPECT_EQ(scroll->horizontalScrollBar()->maximum(), 0);
    });
  }
}

TEST(Icons, AreFoundByName) {
  LogCapture log;
  for (const char* name : {"todo_task_complete_small.gif", "todo_task_incomplete_small.gif",
                           "todo_task_hi_pri_small.gif", "todo_task_normal_pri_small.gif",
                           "todo_task_lo_pri_small.gif", "alert_pop.gif", "save_pop.gif"}) {
    for (const bool scaled : {false, true}) {
      const QPixmap icon = RES_ICON_Reader::getIcon(QString::fromLatin1(name), scaled);
      EXPECT_EQ(icon.deviceIndependentSize(), QSizeF(16, 16)) << name;
      EXPECT_TRUE(icon.hasAlpha()) << name;
    }
  }
  EXPECT_EQ(log.text(), "");
}

// A point that distinguishes each picture from all others, in sixteenths of its side.
TEST(Icons, MatchTheirNames) {
  struct Mark {
    const char* name;
    int x, y;
    QColor color;
  };
  const Mark marks[] = {
      {"todo_task_complete_small", 2, 8, QColor(0x2f, 0x9e, 0x44)},
      {"todo_task_incomplete_small", 2, 8, QColor(0x7d, 0x88, 0x94)},
      {"todo_task_incomplete_small", 8, 8, Qt::transparent},
      {"todo_task_hi_pri_small", 8, 5, QColor(0xe0, 0x31, 0x31)},
      {"todo_task_normal_pri_small", 8, 8, QColor(0x4c, 0x8b, 0xd0)},
      {"todo_task_normal_pri_small", 8, 3, Qt::transparent},
      {"todo_task_lo_pri_small", 8, 12, QColor(0x7d, 0x88, 0x94)},
      {"alert_pop", 5, 13, QColor(0xf0, 0x8c, 0x00)},
      {"save_pop", 3, 13, QColor(0x4c, 0x8b, 0xd0)},
      {"save_pop", 8, 4, QColor(0x2f, 0x9e, 0x44)},
      {"bluetooth_pop", 4, 8, QColor(0x1c, 0x7e, 0xd6)},
      {"lock_pop", 4, 12, QColor(0xe0, 0xa1, 0x00)},
  };
  for (const Mark& mark : marks)
    for (const int form : {1, 2, 4}) {
      const QString file = QStringLiteral(":/ulo/icons/%1%2.gif")
                               .arg(QLatin1String(mark.name),
                                    form == 1 ? QString() : QStringLiteral("@%1x").arg(form));
      const QImage picture(file);
      ASSERT_EQ(picture.size(), QSize(16, 16) * form) << file.toStdString();
      const QColor color = picture.pixelColor(QPoint(mark.x, mark.y) * form);
      ASSERT_EQ(color.alpha(), mark.color.alpha()) << file.toStdString();
      if (color.alpha() == 0)
        continue;
      constexpr int tolerance = 24;  // for the rounding to a palette
      EXPECT_NEAR(color.red(), mark.color.red(), tolerance) << file.toStdString();
      EXPECT_NEAR(color.green(), mark.color.green(), tolerance) << file.toStdString();
      EXPECT_NEAR(color.blue(), mark.color.blue(), tolerance) << file.toStdString();
    }
}

TEST(Icons, ScaleWithFont) {
  const QFont before = QApplication::font();
  QFont large = before;
  large.setPointSize(20);
  QApplication::setFont(large);
  const QString name = QStringLiteral("save_pop.gif");
  const QPixmap scaled = RES_ICON_Reader::getIcon(name, true);
  EXPECT_GE(scaled.deviceIndependentSize().width(), 32);
  EXPECT_EQ(scaled.devicePixelRatio(), 1) << "drawn larger, not stretched";
  EXPECT_EQ(RES_ICON_Reader::getIcon(name, false).deviceIndependentSize().width(), 16);
  QApplication::setFont(before);
}

TEST(Icons, LogsMissingIcon) {
  LogCapture log;
  EXPECT_TRUE(RES_ICON_Reader::getIcon(QStringLiteral("none.gif"), true).isNull());
  EXPECT_EQ(log.withoutLines(), "(platform/appbase/RES_ICON_Reader.cpp)There is no icon none.gif");
}

}  // namespace
