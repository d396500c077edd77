// Tasks as somebody's store may hold them, the same ones in every run of a day.
#pragma once

#include "hand_store.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <random>
#include <string>

namespace bench {

// Names of the categories by UID - 1; the first one is null.
const QStringList& categoryNames();

// Every task has a summary of 5 to 60 characters, a uuid, a category, a priority from 0 to 9, a
// status (4 in 10 need action, 3 are completed, the others are divided between three more) and a
// revision. A third has a note of 50 to 400 characters, two thirds are due on some minute of the
// year before or after today and have an alarm, completed ones have an end.
class TaskSource {
public:
  explicit TaskSource(std::uint64_t seed = 1);
  // Not stored; its category is named.
  Task next();
  // A text of words, `length` characters of 16 bits.
  QString text(int length);

private:
  // 0 to limit - 1.
  int below(int limit);
  QString uuid();

  std::mt19937_64 random_;
  qint64 today_;
};

// Makes a store with `size` tasks, UIDs from 1 on, and a change journal in the directory, which
// must not hold one. All is on the disk then, and nobody has it open.
void fillStore(const std::string& directory, int size);

}  // namespace bench
