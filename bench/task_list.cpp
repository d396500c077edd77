// Measures the Tasks application with stores of several sizes: the time from the start of its
// process to the first painted list, the time per page while scrolling and for a search, and its
// memory. Runs without a display unless $QT_QPA_PLATFORM is set.

#include "ZApplication.h"
#include "dataset.h"
#include "gate.h"
#include "list/list_screen.h"
#include "list/task_list_model.h"
#include "list/task_list_view.h"
#include "paint_watch.h"
#include "ulo/log_sink.h"
#include "window/task_window.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int scrolledPages = 200;
constexpr int starts = 7;

double now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Returns the private memory of the process in kB, without pages that are shared or backed by a
// file.
long ownMemory() {
  std::ifstream status("/proc/self/smaps_rollup");
  std::string word;
  while (status >> word)
    if (word == "Anonymous:") {
      long size = 0;
      status >> size;
      return size;
    }
  return 0;
}

double median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

// The times of a search for a letter, in milliseconds.
struct Search {
  double first;  // until the first rows are painted
  double all;    // until all tasks have been searched
  double wait;   // the longest time during which no other event was handled
};

Search findLetter(tasks::TaskListView& list) {
  const auto* model = static_cast<tasks::TaskListModel*>(list.model());
  Search search{};
  QElapsedTimer all;
  all.start();
  QKeyEvent press(QEvent::KeyPress, Qt::Key_Q, Qt::NoModifier, QStringLiteral("q"));
  QCoreApplication::sendEvent(&list, &press);
  list.viewport()->repaint();
  search.first = static_cast<double>(all.nsecsElapsed()) / 1e6;
  search.wait = search.first;
  while (model->isReading()) {
    QElapsedTimer turn;
    turn.start();
    QCoreApplication::processEvents();
    search.wait = std::max(search.wait, static_cast<double>(turn.nsecsElapsed()) / 1e6);
  }
  search.all = static_cast<double>(all.nsecsElapsed()) / 1e6;
  return search;
}

// Runs the application like its main function, in a separate process, and prints the measurements.
int runApplication(ZApplication&, double started) {
  ulo::openLogSink("task_list");
  if (!ulo::passesLock(ZTASK_ENG_Model::identifier, "ulo-tasks"))
    return 1;
  ZTASK_ENG_Model store;
  tasks::TaskWindow window(store);
  window.setGeometry(0, 0, 360, 640);
  auto* list = window.findChild<tasks::TaskListView*>();
  PaintWatch watch;
  list->viewport()->installEventFilter(&watch);
  window.show();
  while (!watch.painted)
    QCoreApplication::processEvents();
  const double first = now() - started;
  const long opened = ownMemory();

  std::vector<double> pages;
  for (int page = 0; page < scrolledPages; ++page) {
    QElapsedTimer timer;
    timer.start();
    QKeyEvent press(QEvent::KeyPress, Qt::Key_PageDown, Qt::NoModifier);
    QCoreApplication::sendEvent(list, &press);
    list->viewport()->repaint();
    pages.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
  }
  QElapsedTimer timer;
  timer.start();
  QKeyEvent press(QEvent::KeyPress, Qt::Key_End, Qt::NoModifier);
  QCoreApplication::sendEvent(list, &press);
  list->viewport()->repaint();
  const double end = static_cast<double>(timer.nsecsElapsed()) / 1e6;
  const Search search = findLetter(*list);
  std::printf("%f %f %f %f %f %f %f %ld %ld\n", first, median(pages),
              *std::max_element(pages.begin(), pages.end()), end, search.first, search.all,
              search.wait, opened, ownMemory());
  return 0;
}

// The numbers printed by the children: a column for each number, a row for each start.
struct Result {
  static constexpr int columns = 9;
  std::vector<double> column[columns];

  [[nodiscard]] double middle(int index) const { return median(column[index]); }
  [[nodiscard]] double worst(int index) const {
    return *std::max_element(column[index].begin(), column[index].end());
  }
};

bool measure(const QString& program, const std::string& directory, Result& result) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("ULO_DATA_DIR", QString::fromStdString(directory));
  environment.insert("XDG_CONFIG_HOME", QString::fromStdString(directory));
  for (int run = 0; run < starts; ++run) {
    QProcess child;
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(program, {QString::number(now(), 'f', 6)});
    child.waitForFinished(-1);
    const QList<QByteArray> words = child.readAllStandardOutput().simplified().split(' ');
    if (words.size() != Result::columns)
      return false;
    for (int i = 0; i < Result::columns; ++i)
      result.column[i].push_back(words[i].toDouble());
  }
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (qgetenv("QT_QPA_PLATFORM").isEmpty())
    qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("ULO_LOG", "none");
  if (count == 2) {
    ZApplication application(count, arguments);
    return runApplication(application, QByteArray(arguments[1]).toDouble());
  }
  QCoreApplication application(count, arguments);
  ulo::openLogSink("task_list");
  std::printf("| tasks | first list, ms | a page further, ms | worst of %d pages | to the end | "
              "a search, first rows | all found | longest wait | memory when shown, MB | "
              "at the end |\n|---|---|---|---|---|---|---|---|---|---|\n",
              scrolledPages);
  for (const int size : {100, 10'000, 100'000}) {
    const std::string directory = std::string(ULO_BENCH_DATA_DIR "/list-") + std::to_string(size);
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    bench::fillStore(directory, size);
    Result result;
    const bool done = measure(QString::fromLocal8Bit(arguments[0]), directory, result);
    std::filesystem::remove_all(directory);
    if (!done)
      return 1;
    std::printf("| %d | %.0f | %.1f | %.1f | %.1f | %.0f | %.0f | %.0f | %.1f | %.1f |\n", size,
                result.middle(0), result.middle(1), result.worst(2), result.middle(3),
                result.middle(4), result.middle(5), result.worst(6), result.middle(7) / 1024,
                result.middle(8) / 1024);
  }
  return 0;
}
