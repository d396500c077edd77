// Painting of a row of the list.

#include "list/task_row.h"

#include "gui_test.h"
#include "list/task_list_model.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <QStandardItemModel>

using tasks::TaskListModel;
using tasks::TaskRow;

namespace {

constexpr int width = 240;
constexpr int above = 60;  // pixels around the row

class Row : public testing::Test {
protected:
  Row() {
    item_->setText("Title");
    item_->setData(5, TaskListModel::PriorityRole);
    model_.appendRow(item_);
    widget_.resize(width, 320);
  }

  QImage painted() {
    const int height = TaskRow::heightOf(&widget_);
    QImage image(width, height + 2 * above, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    QStyleOptionViewItem option;
    option.initFrom(&widget_);
    option.widget = &widget_;
    option.state = QStyle::State_Enabled;
    option.rect = QRect(0, above, width, height);
    row_.paint(&painter, option, model_.index(0, 0));
    return image;
  }
  // Pixels of almost this color.
  static int pixels(const QImage& image, const QColor& wanted) {
    constexpr int tolerance = 40;
    int count = 0;
    for (int y = above; y < image.height() - above; ++y)
      for (int x = 0; x < image.width(); ++x) {
        const QColor color = image.pixelColor(x, y);
        count += std::abs(color.red() - wanted.red()) <= tolerance &&
                         std::abs(color.green() - wanted.green()) <= tolerance &&
                         std::abs(color.blue() - wanted.blue()) <= tolerance
                     ? 1
                     : 0;
      }
    return count;
  }
  // Pixels that are clearly red.
  static int redPixels(const QImage& image) {
    int count = 0;
    for (int y = above; y < image.height() - above; ++y)
      for (int x = 0; x < image.width(); ++x) {
        const QColor color = image.pixelColor(x, y);
        count += color.red() > 150 && color.green() < 90 && color.blue() < 90 ? 1 : 0;
      }
    return count;
  }

  QStandardItemModel model_;
  QStandardItem* item_ = new QStandardItem;
  QWidget widget_;
  TaskRow row_;
};

TEST_F(Row, OverdueDayIsRed) {
  item_->setData("Yesterday", TaskListModel::DueRole);
  EXPECT_EQ(redPixels(painted()), 0);
  item_->setData(true, TaskListModel::OverdueRole);
  EXPECT_GT(redPixels(painted()), 20);
}

TEST_F(Row, ShowsStatusPriorityAndSelection) {
  const QImage plain = painted();
  item_->setData(true, TaskListModel::CompletedRole);
  const QImage completed = painted();
  EXPECT_NE(completed, plain);
  item_->setData(1, TaskListModel::PriorityRole);
  const QImage high = painted();
  EXPECT_NE(high, completed);
  EXPECT_GT(redPixels(high), 20);
  row_.setChoosing(true);
  const QImage unchosen = painted();
  EXPECT_NE(unchosen, high);
  item_->setData(true, TaskListModel::ChosenRole);
  EXPECT_NE(painted(), unchosen);
}

TEST_F(Row, EachStatusAndPriorityHasItsIcon) {
  const QColor green(0x2f, 0x9e, 0x44);  // complete
  const QColor red(0xe0, 0x31, 0x31);    // high
  const QColor blue(0x4c, 0x8b, 0xd0);   // normal
  const QColor gray(0x7d, 0x88, 0x94);   // low
  constexpr int some = 20;
  // Letters are gray too.
  item_->setText({});
  item_->setData(5, TaskListModel::PriorityRole);
  const QImage open = painted();
  EXPECT_EQ(pixels(open, green), 0);
  EXPECT_GT(pixels(open, gray), some);
  item_->setData(true, TaskListModel::CompletedRole);
  const QImage normal = painted();
  EXPECT_GT(pixels(normal, green), some);
  EXPECT_GT(pixels(normal, blue), some);
  EXPECT_EQ(pixels(normal, gray), 0);
  EXPECT_EQ(pixels(normal, red), 0);
  item_->setData(1, TaskListModel::PriorityRole);
  const QImage high = painted();
  EXPECT_GT(pixels(high, red), some);
  EXPECT_EQ(pixels(high, blue), 0);
  item_->setData(9, TaskListModel::PriorityRole);
  const QImage low = painted();
  EXPECT_GT(pixels(low, gray), some);
  EXPECT_EQ(pixels(low, red), 0);
  EXPECT_EQ(pixels(low, blue), 0);
}

TEST_F(Row, PaintsNothingOutside) {
  item_->setText(QString("a" + QString(40, QChar(0x0301))).repeated(20));
  item_->setData(QString(200, u'W'), TaskListModel::DueRole);
  item_->setData(QString(200, u'W'), TaskListModel::CategoryRole);
  const QImage image = painted();
  for (int x = 0; x < width; ++x)
    for (const int y : {0, above / 2, above - 1, image.height() - above, image.height() - 1})
      ASSERT_EQ(image.pixelColor(x, y), QColor(Qt::magenta)) << x << ' ' << y;
}

TEST_F(Row, BoxIsAtStartOfLine) {
  const QRect row(0, 0, width, 36);
  EXPECT_EQ(TaskRow::statusZone(&widget_, row).left(), 0);
  widget_.setLayoutDirection(Qt::RightToLeft);
  EXPECT_EQ(TaskRow::statusZone(&widget_, row).right(), width - 1);
}

}  // namespace
