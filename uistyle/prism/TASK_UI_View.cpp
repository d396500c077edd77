#include "TASK_UI_View.h"

// The store is whatever setEngine says; there is none to start with.
TASK_UI_View::TASK_UI_View(QWidget* parent, const char* name, unsigned int flags)
    : ZKbMainWidget(parent, name, flags) {}

TASK_UI_View::~TASK_UI_View() = default;
