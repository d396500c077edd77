#pragma once

// Reports that a to-do could not be saved, with this code of TASK_SyncML_Result: logs it, and tells
// the user if memory is full.
void reportSaveFailure(int code);
