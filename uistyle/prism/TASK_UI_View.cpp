#include "TASK_UI_View.h"

// The store is set by setEngine; null until then.
TASK_UI_View::TASK_UI_View(QWidget* parent, const char* name, unsigned int flags)
    : ZKbMainWidget(parent, name, flags) {}

TASK_UI_View::~TASK_UI_View() = default;
