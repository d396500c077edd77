#include "dataset.h"

#include <QDateTime>

#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace bench {
namespace {

constexpr const char* words[] = {
    "call",    "the",      "dentist", "about",   "report",  "and",    "buy",      "milk",
    "Straße",  "meeting",  "with",    "project", "review",  "for",    "travel",   "tickets",
    "to",      "Köln",     "before",  "Monday",  "invoice", "garden", "in",       "repair",
    "bicycle", "birthday", "gift",    "school",  "of",      "doctor", "reserve",  "table",
    "买票",    "prepare",  "slides",  "send",    "letter",  "renew",  "passport", "clean",
};

// The status values, with the number of tasks out of ten that have them.
struct StatusShare {
  int status;
  int tenths;
};
constexpr StatusShare statusShares[] = {{1, 4}, {0, 3}, {2, 1}, {3, 1}, {5, 1}};

constexpr int dayMinutes = 24 * 60;
constexpr int yearMinutes = 365 * dayMinutes;

}  // namespace

const QStringList& categoryNames() {
  // The first six are those that the store creates itself.
  static const QStringList names = {QString(),  "none",   "meeting", "vacation", "appointment",
                                    "party",    "work",   "home",    "garden",   "school",
                                    "shopping", "travel", "health",  "money",    "Familie",
                                    "sport",    "music",  "books",   "computer", "Sonstiges"};
  return names;
}

TaskSource::TaskSource(std::uint64_t seed)
    : random_(seed), today_(QDate::currentDate().startOfDay().toSecsSinceEpoch()) {}

int TaskSource::below(int limit) {
  return static_cast<int>(random_() % static_cast<unsigned>(limit));
}

QString TaskSource::text(int length) {
  QString text;
  text.reserve(length + 16);
  while (text.size() < length) {
    if (!text.isEmpty())
      text += ' ';
    text += QString::fromUtf8(words[below(std::size(words))]);
  }
  text.truncate(length);
  // The exchange format does not preserve a trailing blank.
  if (text.back() == ' ')
    text.back() = '.';
  return text;
}

QString TaskSource::uuid() {
  const auto high = static_cast<unsigned long long>(random_());
  const auto low = static_cast<unsigned long long>(random_());
  char text[37];
  std::snprintf(text, sizeof text, "%08llx-%04llx-%04llx-%04llx-%012llx", high >> 32U,
                (high >> 16U) & 0xFFFFU, high & 0xFFFFU, low >> 48U, low & 0xFFFFFFFFFFFFU);
  return QString::fromLatin1(text);
}

Task TaskSource::next() {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, text(5 + below(56)));
  if (below(3) == 0)
    task.setString(Task::TASK_FIELD_NOTE, text(50 + below(351)));
  task.setString(Task::TASK_FIELD_UUID, uuid());
  task.setString(Task::TASK_FIELD_CATEGORY,
                 categoryNames().at(below(static_cast<int>(categoryNames().size()))));
  task.setPriority(below(10));
  int tenth = below(10);
  const StatusShare* share = std::begin(statusShares);
  for (; tenth >= share->tenths; ++share)
    tenth -= share->tenths;
  task.setStatus(share->status);

  const auto minute = [this](int number) {
    return QDateTime::fromSecsSinceEpoch(today_ + qint64{60} * number);
  };
  if (below(3) != 0) {
    const int due = below(2 * yearMinutes) - yearMinutes;
    task.setDateTime(Task::TASK_FIELD_DUE, minute(due));
    task.setDateTime(Task::TASK_FIELD_ALARM, minute(due - below(dayMinutes)));
  }
  if (share->status == 0)
    task.setDateTime(Task::TASK_FIELD_END, minute(-below(yearMinutes)));
  task.setDateTime(Task::TASK_FIELD_REVISION, minute(-below(yearMinutes)));
  return task;
}

void fillStore(const std::string& directory, int size) {
  std::filesystem::create_directories(directory);
  setenv("ULO_DATA_DIR", directory.c_str(), 1);
  { const ZTASK_ENG_Model madeTables; }
  HandStore store(directory);
  const Database& database = store.database();
  // These settings affect only the time to fill the store.
  execute(database, "PRAGMA synchronous = OFF; PRAGMA cache_size = -1000000; BEGIN");
  const QStringList& names = categoryNames();
  for (const QString& name : names)
    if (!store.categoryUid(name))
      store.insertCategory(name);
  TaskSource source;
  for (int i = 0; i < size; ++i) {
    const Task task = source.next();
    store.insert(task, *store.categoryUid(task.getString(Task::TASK_FIELD_CATEGORY)));
  }
  execute(database, "COMMIT; PRAGMA synchronous = FULL; PRAGMA wal_checkpoint(TRUNCATE)");
}

}  // namespace bench
