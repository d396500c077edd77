// Reading and writing vTodo text with the vObject library alone, written by hand for texts that are
// known to be well formed and in UTF-8.
#pragma once

#include "hand_store.h"

#include <QByteArray>

#include <string>

namespace bench {

// The records are appended; the list deletes them if it is told to.
void readTodosFromMemory(const QByteArray& text, QList<Task>& tasks);
void readTodosFromFile(const std::string& fileName, QList<Task>& tasks);
// One calendar with all tasks.
void writeTodos(const std::string& fileName, const QList<Task>& tasks);

}  // namespace bench
