#include "write_transaction.h"

#include "ZTASK_ENG_Model.h"
#include "module_log.h"
#include "ulodb2.h"

namespace ulo {

WriteTransaction::WriteTransaction(Changes changes) : result_(DB_Open(storeDatabase)) {
  opened_ = result_ == DB_OK;
  if (!opened_)
    return;
  result_ = changes == Changes::many ? DB_BeginBulkWrite() : DB_BeginWrite();
  open_ = result_ == DB_OK;
  if (!open_) {
    ULO_LOG_ERROR("The transaction can't begin! [ret=%d]", result_);
    close();
  }
}

WriteTransaction::~WriteTransaction() {
  if (open_)
    DB_EndWrite(0);
  close();
}

int WriteTransaction::commit() {
  if (!open_)
    return result_ == DB_OK ? DB_TRANSACTION : result_;
  open_ = false;
  const int committed = DB_EndWrite(1);
  if (committed != DB_OK)
    ULO_LOG_ERROR("The transaction can't be committed! [ret=%d]", committed);
  close();
  return committed;
}

void WriteTransaction::close() {
  if (opened_)
    DB_Close();
  opened_ = false;
}

int storeCode(int databaseResult) {
  switch (databaseResult) {
  case DB_OK:
    return TASK_ENG_OK;
  case DB_FULL:
    return TASK_ENG_MEMORY_FULL;
  default:
    return TASK_ENG_DATABASE_FAILURE;
  }
}

}  // namespace ulo
