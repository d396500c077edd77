// Finds tasks by their identity across stores. The store has no index of uuids: each call reads the
// uuids of all tasks once. Requires: the database is open in this thread.
#pragma once

#include <QHash>
#include <QString>

#include <vector>

namespace ulo {

// Finds the task with this uuid; if several tasks have it, the one with the lowest UID. Fails with
// TASK_ENG_NOT_FOUND, TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE and leaves `uid` unchanged.
int findTask(const QString& uuid, unsigned int& uid);

// Sets `uids` to the UIDs of those `uuids` that belong to a task, as findTask finds them. Fails
// with TASK_ENG_MEMORY_FULL or TASK_ENG_DATABASE_FAILURE and leaves `uids` unchanged.
int findTasks(const std::vector<QString>& uuids, QHash<QString, unsigned int>& uids);

}  // namespace ulo
