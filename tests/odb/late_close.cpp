// A store may be a static object. It then closes the database after the thread-local variables have
// been destroyed.

#include "temporary_directory.h"
#include "ulodb2.h"

#include <cstdlib>

namespace {

struct StaticStore {
  DataDirectory directory;
  ~StaticStore() {
    if (DB_Exec("create table t (UID integer auto)") != DB_OK || DB_Close() != DB_OK)
      std::_Exit(2);
  }
};

StaticStore store;

}  // namespace

int main() {
  return DB_Open(1) == DB_OK ? 0 : 1;
}
