#include "write_transaction.h"

#include "ulodb2.h"

namespace ulo {
namespace {

constexpr int storeDatabase = 1;

}  // namespace

WriteTransaction::WriteTransaction() : result_(DB_Open(storeDatabase)) {
  opened_ = result_ == DB_OK;
  if (!opened_)
    return;
  result_ = DB_BeginTransaction(0);
  open_ = result_ == DB_OK;
  if (!open_)
    close();
}

WriteTransaction::~WriteTransaction() {
  if (open_)
    DB_AbortTransaction();
  close();
}

int WriteTransaction::commit() {
  if (!open_)
    return result_ == DB_OK ? DB_TRANSACTION : result_;
  open_ = false;
  const int committed = DB_CommitTransaction();
  close();
  return committed;
}

void WriteTransaction::close() {
  if (opened_)
    DB_Close();
  opened_ = false;
}

}  // namespace ulo
