// Measures the time of the detail view from openView to its first painted frame, for a note of 4002
// characters, without a display.

#include "TASK_UI_DetailView.h"
#include "ZApplication.h"
#include "paint_watch.h"
#include "ulo/log_sink.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

ZTASK_ENG_Task longTask() {
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QStringLiteral("A task with a long note"));
  QString note;
  while (note.size() < ZTASK_ENG_Task::noteLimit)
    note += QString::fromUtf8("Käse und Müsli kaufen, 给妈妈打电话; then go home. ");
  task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, note.left(ZTASK_ENG_Task::noteLimit));
  return task;
}

double firstFrame(ZTASK_ENG_Task& task) {
  TASK_UI_DetailView view(nullptr, nullptr, 0);
  view.resize(240, 320);
  PaintWatch watch;
  QElapsedTimer timer;
  timer.start();
  view.openView(&task);
  view.contentWidget()->installEventFilter(&watch);
  view.show();
  while (!watch.painted)
    QCoreApplication::processEvents();
  return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

}  // namespace

int main(int count, char** arguments) {
  constexpr int runs = 51;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("ULO_LOG", "none");
  ZApplication application(count, arguments);
  ulo::openLogSink("detail_view");
  ZTASK_ENG_Task task = longTask();
  const double first = firstFrame(task);
  std::vector<double> times;
  for (int i = 0; i < runs; ++i)
    times.push_back(firstFrame(task));
  std::sort(times.begin(), times.end());
  std::printf("openView to the first painted frame, ms: first %.1f, then median %.1f, worst %.1f\n",
              first, times[runs / 2], times.back());
  return 0;
}
