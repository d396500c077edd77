// What the application says of what it did or could not do.
#pragma once

#include <QString>

class QWidget;

namespace tasks {

struct ImportResult;

// Tells, in a dialog, that the store did not take a task, and returns when the user has seen it.
// The code is the store's.
void tellNotStored(int code, QWidget* parent);

// How far an import has come.
[[nodiscard]] QString importText(unsigned int stored, unsigned int all);
// How many tasks came from files, and from which file none. Says so where the list does not show
// what came last.
[[nodiscard]] QString importText(const ImportResult& result, bool isShown);

}  // namespace tasks
