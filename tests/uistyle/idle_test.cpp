// The request to return to the idle screen, with application objects of any class.

#include "TASK_UI_DetailView.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPointer>
#include <QTest>

namespace {

class Phone : public QApplication {
  Q_OBJECT

public:
  using QApplication::QApplication;

Q_SIGNALS:
  void askReturnToIdle(int reason);
};

Phone& phone() {
  return *static_cast<Phone*>(qApp);
}

TEST(ReturnToIdle, ClosesViewsOfAnyApplicationThatHasTheSignal) {
  TASK_UI_DetailView view(nullptr, nullptr, 0);
  view.show();
  Q_EMIT phone().askReturnToIdle(1);
  EXPECT_FALSE(view.isVisible());
}

TEST(ReturnToIdle, DeletesStandaloneView) {
  const DataDirectory directory;
  ZTASK_ENG_Task task;
  QPointer<TASK_UI_DetailView> view = new TASK_UI_DetailView(nullptr, nullptr, 0);
  view->openStandaloneView(task);
  view->show();
  Q_EMIT phone().askReturnToIdle(1);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(view.isNull());
}

}  // namespace

#include "idle_test.moc"

int main(int count, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  Phone application(count, arguments);
  QApplication::setQuitOnLastWindowClosed(false);
  testing::InitGoogleTest(&count, arguments);
  return RUN_ALL_TESTS();
}
