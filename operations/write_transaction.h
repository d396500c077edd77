#pragma once

namespace ulo {

// The number of the store's database, for DB_Open.
inline constexpr int storeDatabase = 1;

// A write transaction on the store of this thread.
//
// All stores (ZTASK_ENG_Model) of a thread use one connection. What they store while a
// WriteTransaction exists is committed as a whole by commit(), or discarded as a whole.
// No other program can write between a read and a write within the transaction.
//
// Transactions nest: an inner one joins the outer one, whose commit() alone decides. removeAll() of
// the store and the creation of its tables begin transactions themselves and must stay outside.
// Must be used and destroyed in the thread that constructed it.
class WriteTransaction {
public:
  enum class Changes {
    few,
    many,  // thousands, each of a few rows; an inner transaction is like the outer one
  };

  // Opens the store's database for this thread and begins the transaction. Blocks while another
  // program or thread holds the write lock, currently up to 10 seconds. A failure is logged.
  explicit WriteTransaction(Changes changes = Changes::few);
  WriteTransaction(const WriteTransaction&) = delete;
  WriteTransaction& operator=(const WriteTransaction&) = delete;
  // Discards what was not committed.
  ~WriteTransaction();

  // True until commit() is called, if the transaction has begun.
  explicit operator bool() const { return open_; }
  // Returns DB_OK, or the result of the operation that failed to begin the transaction: DB_BUSY if
  // another program kept the write lock, DB_TRANSACTION while this thread reads (DB_BeginRead).
  [[nodiscard]] int result() const { return result_; }

  // Returns a DB_Result. Unless it is DB_OK, nothing was stored. Without an open transaction
  // returns result(), or DB_TRANSACTION after an earlier commit(). A failure is logged.
  [[nodiscard]] int commit();

private:
  void close();

  int result_;
  bool opened_ = false;
  bool open_ = false;
};

// The result of the store (ZTASK_ENG_Model) for a change that the database refused with
// `databaseResult`.
[[nodiscard]] int storeCode(int databaseResult);

}  // namespace ulo
