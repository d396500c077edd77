#include "calendar_file.h"
#include "exit_codes.h"
#include "session.h"
#include "text.h"
#include "todo_text.h"
#include "verbs.h"

#include <memory>
#include <string>
#include <string_view>

namespace ulotask {
namespace {

struct MergeOptions {
  std::string one;
  std::string other;
};

QString uidOf(const QByteArray& text) {
  return TASK_ENG_Ical(text).task(0).getString(ZTASK_ENG_Task::TASK_FIELD_UUID);
}

void merge(Session& session, const MergeOptions& options) {
  const QByteArray one = readIcalTodo(options.one);
  const QByteArray other = readIcalTodo(options.other);
  if (uidOf(one) != uidOf(other))
    throw Failure(Exit::usage, "the files contain different to-dos: their UIDs differ");
  replaceFiles({options.one, options.other}, ulo::mergedTodo(one, other).toStdString());
  session.output.line("Merged " + oneLine(std::string_view(options.one)) + " and " +
                      oneLine(std::string_view(options.other)));
}

}  // namespace

void addIcalVerbs(Verb& program, Session& session) {
  Verb group = program.addGroup("ical", "Work on iCalendar 2.0 files");
  Verb verb = group.addVerb("merge", "Merge two states of one to-do");
  auto options = std::make_shared<MergeOptions>();
  verb.option("FILE", options->one, "An iCalendar 2.0 file with one to-do").required();
  verb.option("OTHER", options->other, "Another file with the same to-do").required();
  verb.footer(
      "Afterwards both files have the same content. Where both have a value, that of the\n"
      "later LAST-MODIFIED is kept, or of the higher SEQUENCE if one has no LAST-MODIFIED,\n"
      "or of FILE if these do not differ; lines that only one of them has are kept, too.\n"
      "If one cannot be read or written, neither changes. Does not use the store.\n"
      "\n"
      "vdirsyncer resolves conflicts with it:\n"
      "  conflict_resolution = [\"command\", \"ulotask\", \"ical\", \"merge\"]\n"
      "Example:\n"
      "  ulotask ical merge ours.ics theirs.ics");
  verb.run([options, &session] { merge(session, *options); });
}

}  // namespace ulotask
