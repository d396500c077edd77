// Realistic tasks, the same in every run on the same day.
#pragma once

#include "hand_store.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <random>
#include <string>

namespace bench {

// Returns the names of the categories, indexed by UID - 1. The first one is null.
const QStringList& categoryNames();

// Generates tasks. Every task has a summary of 5 to 60 characters, a uuid, a category, a priority
// from 0 to 9, a status (4 of 10 need action, 3 are completed, the others have one of three more)
// and a revision. One third have a note of 50 to 400 characters, two thirds have an alarm and are
// due at some minute within a year before or after today, and completed ones have an end date.
class TaskSource {
public:
  explicit TaskSource(std::uint64_t seed = 1);
  // Returns a task that is not stored, with the name of its category.
  Task next();
  // Returns a text of words with `length` 16-bit characters.
  QString text(int length);

private:
  // Returns a number from 0 to limit - 1.
  int below(int limit);
  QString uuid();

  std::mt19937_64 random_;
  qint64 today_;
};

// Creates a store with `size` tasks, with UIDs starting at 1, and a change journal in the
// directory, which must not contain a store. Flushes it to the disk and closes it.
void fillStore(const std::string& directory, int size);

}  // namespace bench
