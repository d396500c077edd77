// Hand-written reading and writing of vTodo text with only the vObject library, for texts that are
// known to be well-formed and in UTF-8.
#pragma once

#include "hand_store.h"

#include <QByteArray>

#include <string>

namespace bench {

// Appends the records. The list deletes them if it deletes its items.
void readTodosFromMemory(const QByteArray& text, QList<Task>& tasks);
void readTodosFromFile(const std::string& fileName, QList<Task>& tasks);
// Writes one calendar with all tasks.
void writeTodos(const std::string& fileName, const QList<Task>& tasks);

}  // namespace bench
