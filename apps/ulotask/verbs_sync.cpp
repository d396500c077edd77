#include "TASK_ENG_SyncML.h"
#include "arguments.h"
#include "calendar_file.h"
#include "exit_codes.h"
#include "session.h"
#include "ulodb2.h"
#include "verbs.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ulotask {
namespace {

constexpr std::size_t largestItem = std::size_t{1} << 24U;  // bytes

std::string wholeInput() {
  return readFile("-", largestItem);
}

void requireSync(int code, const std::string& what) {
  switch (code) {
  case TASK_SYNCML_OK:
    return;
  case TASK_SYNCML_NOTFOUND:
    throw Failure(Exit::notFound, what + ": no task has this UID, or no category the name that "
                                         "the item names");
  case TASK_SYNCML_NOMEMORY:
    throw noRoom(what);
  case TASK_SYNCML_TOOLARGE:
    throw Failure(Exit::tooLarge, what + ": the item is too large");
  case TASK_SYNCML_BADPARAM:
    throw Failure(Exit::usage, what + ": invalid parameter");
  default:
    throw Failure(DB_LastResult() == DB_FULL ? Exit::storeFull : Exit::failed,
                  what + " failed" +
                      (*DB_LastFailure() == '\0' ? vcalendarReason() : databaseReason()));
  }
}

// A synchronization run. Its destructor broadcasts that something was changed.
class Run {
public:
  explicit Run(TASK_ENG_SyncML& adaptor) : adaptor_(adaptor) { adaptor_.beginSync(0); }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  ~Run() { adaptor_.endSync(); }

private:
  TASK_ENG_SyncML& adaptor_;
};

using Work = std::function<void(Session&, TASK_ENG_SyncML&, unsigned int)>;

void addItemVerb(Verb& group, Session& session, const char* name, const char* description,
                 bool wantsUid, const Work& work) {
  Verb verb = group.addVerb(name, description);
  auto uid = std::make_shared<std::string>();
  if (wantsUid)
    verb.option("UID", *uid, "The task's number, as printed by ids").required();
  verb.run([uid, wantsUid, work, &session] {
    const unsigned int number = wantsUid ? argumentUid(*uid) : 0;
    // Reports a store that cannot be opened as the other verbs do.
    session.store();
    TASK_ENG_SyncML adaptor;
    const Run run(adaptor);
    work(session, adaptor, number);
  });
}

}  // namespace

void addSyncVerbs(Verb& program, Session& session) {
  Verb verb = program.addGroup(
      "sync-item", "Exchange single to-dos as vCalendar 1.0 text, as a synchronization does");
  verb.footer("Texts are read from standard input and written to standard output. A change is\n"
              "broadcast at the end; ulotask watch shows the broadcast.\n"
              "Examples:\n"
              "  ulotask sync-item ids\n"
              "  ulotask sync-item get 7 > item.vcs\n"
              "  ulotask sync-item put < item.vcs\n"
              "  ulotask sync-item replace 7 < item.vcs");
  addItemVerb(verb, session, "get", "Write the text of a task", true,
              [](Session& s, TASK_ENG_SyncML& adaptor, unsigned int uid) {
                std::string text;
                requireSync(adaptor.getEvent(text, uid), "reading the task");
                if (text.empty())
                  s.output.notice("the task has no text" + vcalendarReason());
                s.output.write(text);
              });
  addItemVerb(verb, session, "put", "Add the first to-do of a text; prints its UID", false,
              [](Session& s, TASK_ENG_SyncML& adaptor, unsigned int) {
                unsigned int uid = 0;
                requireSync(adaptor.addEvent(wholeInput(), uid), "adding the item");
                s.output.line(std::to_string(uid));
              });
  addItemVerb(verb, session, "replace", "Store the first to-do of a text over a task", true,
              [](Session&, TASK_ENG_SyncML& adaptor, unsigned int uid) {
                requireSync(adaptor.updateEvent(wholeInput(), uid), "replacing the task");
              });
  addItemVerb(verb, session, "rm", "Remove a task", true,
              [](Session&, TASK_ENG_SyncML& adaptor, unsigned int uid) {
                requireSync(adaptor.removeEvent(uid), "removing the task");
              });
  addItemVerb(verb, session, "ids", "Print the UID of every task", false,
              [](Session& s, TASK_ENG_SyncML& adaptor, unsigned int) {
                std::vector<unsigned int> ids;
                requireSync(adaptor.getAllIDs(ids), "listing the tasks");
                for (const unsigned int uid : ids)
                  s.output.line(std::to_string(uid));
              });
}

}  // namespace ulotask
