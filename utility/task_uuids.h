// Finds tasks by their identity across stores. The store has no index of uuids: each call reads the
// uuids of all tasks once. Requires: the database is open in this thread.
#pragma once

#include <QString>
#include <QStringView>

#include <functional>

namespace ulo {

// Finds the task with this uuid; if several tasks have it, the one with the lowest UID. Fails with
// TASK_ENG_NOT_FOUND, TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE and leaves `uid` unchanged.
int findTask(const QString& uuid, unsigned int& uid);

// Calls `visit` for each task that has a uuid, in the order of their UIDs, all read in one state of
// the store. Fails with TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE.
int forEachUuid(const std::function<void(QStringView uuid, unsigned int uid)>& visit);

}  // namespace ulo
