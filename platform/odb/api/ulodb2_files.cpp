// The maintenance part of the C interface.

#include "ulodb2_files.h"

#include "base/failure.h"
#include "base/line_sink.h"
#include "files/recovery.h"
#include "module_log.h"
#include "sqlite/store_place.h"

#include <new>

using namespace ulo::odb;

namespace {

using Line = void (*)(void* context, const char* utf8);

// Runs `work` with a sink for its messages. On failure passes the reason to the sink and returns
// the code.
template <typename Work> int reported(Line line, void* context, Work work) {
  if (line == nullptr)
    return DB_BAD_ARGUMENT;
  try {
    return work([line, context](const std::string& text) {
      if (!text.empty())
        line(context, text.c_str());
    });
  } catch (const Failure& failure) {
    ULO_LOG_ERROR("%s", failure.what());
    line(context, failure.what());
    return failure.code();
  } catch (const std::bad_alloc&) {
    line(context, "no memory");
    return DB_NO_MEMORY;
  } catch (const std::exception& failure) {
    line(context, failure.what());
    return DB_ERROR;
  }
}

void require(const char* text) {
  if (text == nullptr)
    throw Failure(DB_BAD_ARGUMENT, "the name of a file is null");
}

}  // namespace

int DB_Inspect(int database, const char* sample, Line line, void* context) {
  return reported(line, context, [&](const LineSink& report) {
    require(sample);
    return inspectStore(placeOf(database), sample, report) == 0 ? DB_OK : DB_ERROR;
  });
}

int DB_FindLost(int database, Line line, void* context) {
  return reported(line, context, [&](const LineSink&) {
    requireNotLost(placeOf(database));
    return DB_OK;
  });
}

int DB_Backup(int database, const char* file, int overwrite, Line line, void* context) {
  return reported(line, context, [&](const LineSink&) {
    require(file);
    backUp(placeOf(database), file, overwrite != 0);
    return DB_OK;
  });
}

int DB_Restore(int database, const char* file, const char* sample, Line line, void* context) {
  return reported(line, context, [&](const LineSink& report) {
    require(file);
    require(sample);
    restore(placeOf(database), file, sample, report);
    return DB_OK;
  });
}

int DB_Rescue(int database, const char* sample, Line line, void* context) {
  return reported(line, context, [&](const LineSink& report) {
    require(sample);
    rescue(placeOf(database), sample, report);
    return DB_OK;
  });
}
