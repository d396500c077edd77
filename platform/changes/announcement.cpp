#include "announcement.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace ulo {

void announceCommit(const std::string& file) noexcept {
  utimensat(AT_FDCWD, file.c_str(), nullptr, 0);
}

namespace {

thread_local int openTransactions = 0;

}  // namespace

UncommittedChanges::UncommittedChanges() noexcept {
  ++openTransactions;
}

UncommittedChanges::~UncommittedChanges() {
  --openTransactions;
}

bool UncommittedChanges::exist() noexcept {
  return openTransactions > 0;
}

}  // namespace ulo
