#include "workbench.h"

#include "dataset.h"

#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr const char* tasksFile = "tasks.db";
constexpr const char* filesBeside[] = {"-wal", "-shm"};

// Flushes the copy to the disk, so that no later flush waits for it.
void copyFile(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::filesystem::create_directories(to.parent_path());
  std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
  for (const char* beside : filesBeside)
    std::filesystem::remove(to.string() + beside);
  const int descriptor = open(to.c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor < 0 || fsync(descriptor) != 0)
    throw std::system_error(errno, std::generic_category(), to.string());
  ::close(descriptor);
}

}  // namespace

Workbench::Workbench(std::filesystem::path directory, int size)
    : directory_(std::move(directory)), size_(size) {
  std::filesystem::remove_all(directory_);
}

Workbench::~Workbench() {
  close();
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

std::string Workbench::directory(Side side) const {
  return directory_ / (side == Side::ours ? "ours" : "hand");
}

void Workbench::fill() {
  if (isFilled_)
    return;
  fillStore(master(), size_);
  for (const Side side : {Side::ours, Side::hand})
    copyFile(master() / tasksFile, std::filesystem::path(directory(side)) / tasksFile);
  isFilled_ = true;
}

OurStore& Workbench::ours() {
  if (!ours_) {
    prepareOpen(Side::ours);
    ours_ = std::make_unique<OurStore>();
  }
  return *ours_;
}

HandStore& Workbench::hand() {
  if (!hand_) {
    prepareOpen(Side::hand);
    hand_ = std::make_unique<HandStore>(directory(Side::hand));
  }
  return *hand_;
}

void Workbench::close() {
  ours_.reset();
  hand_.reset();
}

void Workbench::prepareOpen(Side side) {
  fill();
  if (side == Side::ours)
    setenv("ULO_DATA_DIR", directory(side).c_str(), 1);
}

Database Workbench::tasksOf(Side side) const {
  return openDatabase(directory(side) + "/" + tasksFile);
}

void Workbench::restore(Side side, const Uids& changed) {
  const Database database = tasksOf(side);
  execute(database, "ATTACH '" + (master() / tasksFile).string() + "' AS filled; BEGIN IMMEDIATE");
  execute(database, "DELETE FROM main.task_table_task WHERE UID > " + std::to_string(size_) +
                        "; UPDATE main.sqlite_sequence SET seq = " + std::to_string(size_) +
                        " WHERE name = 'task_table_task'");
  for (const unsigned int uid : changed) {
    std::string sql = "DELETE FROM main.task_table_task WHERE UID = ";
    sql += std::to_string(uid);
    sql += "; INSERT INTO main.task_table_task SELECT * FROM filled.task_table_task WHERE UID = ";
    sql += std::to_string(uid);
    execute(database, sql);
  }
  // Each measured write starts with an empty log.
  execute(database, "COMMIT; PRAGMA main.wal_checkpoint(TRUNCATE)");
}

void Workbench::restoreAll(Side side) {
  close();
  fill();
  copyFile(master() / tasksFile, std::filesystem::path(directory(side)) / tasksFile);
}

std::string Workbench::lines(Side side, const std::string& sql) {
  const Database database = openDatabase(directory(side) + "/" + tasksFile);
  std::string result;
  const auto append = [](void* text, int columns, char** values, char**) {
    for (int i = 0; i < columns; ++i)
      *static_cast<std::string*>(text) += std::string(values[i] == nullptr ? "-" : values[i]) + "|";
    return 0;
  };
  check(sqlite3_exec(database.get(), sql.c_str(), append, &result, nullptr) == SQLITE_OK,
        database.get());
  return result;
}

std::string Workbench::stored(Side side, unsigned int uid) {
  return lines(side, "SELECT UID, priority, status, note, summary, uuid, alarm, due, \"end\", "
                     "categoryUid FROM task_table_task WHERE UID = " +
                         std::to_string(uid)) +
         lines(side, "SELECT uid, type FROM ulo_changes ORDER BY entry DESC LIMIT 1");
}

std::string Workbench::removals(Side side) {
  return lines(side, "SELECT count(*) FROM task_table_task") +
         lines(side,
               "SELECT count(*), sum(uid), min(uid), max(uid) FROM ulo_changes WHERE type = 3");
}

}  // namespace bench
