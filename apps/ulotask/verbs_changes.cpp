#include "change_lines.h"
#include "change_watch.h"
#include "exit_codes.h"
#include "session.h"
#include "task_format.h"
#include "ulo/change_journal.h"
#include "ulo/data_directory.h"
#include "verbs.h"

#include <QDateTime>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ulotask {
namespace {

struct ChangesOptions {
  std::int64_t since = 0;
  std::string generation;
  bool follow = false;
  bool net = false;
  bool json = false;
};

// The largest integer that JSON numbers represent exactly. No store reaches it.
constexpr std::int64_t furthestEntry = (std::int64_t{1} << 53) - 1;

void printNet(Output& output, const ulo::NetChanges& net, bool json) {
  const std::pair<ulo::ChangeType, const std::vector<std::uint32_t>&> lists[] = {
      {ulo::ChangeType::added, net.added},
      {ulo::ChangeType::updated, net.updated},
      {ulo::ChangeType::removed, net.removed}};
  QJsonObject object{{"lastEntry", static_cast<qint64>(net.lastEntry)},
                     {"generation", QString::fromStdString(net.generation)},
                     {"incomplete", net.incomplete}};
  for (const auto& [type, uids] : lists) {
    QJsonArray array;
    for (const std::uint32_t uid : uids) {
      array.append(static_cast<qint64>(uid));
      if (!json)
        output.line(std::string(wordOf(type)) + ' ' + std::to_string(uid));
    }
    object[wordOf(type)] = array;
  }
  if (json)
    output.json(object);
}

void changes(Session& session, const ChangesOptions& options) {
  session.store();
  const std::string directory = ulo::dataDirectory();
  ulo::ChangeJournal journal(directory);
  Output& output = session.output;

  ulo::NetChanges net;
  requireJournal(
      journal.changesSince(ZTASK_ENG_Model::identifier, options.since, net, options.generation));
  if (net.incomplete)
    output.notice("the journal does not have all changes after entry " +
                  std::to_string(options.since) + ": compare all tasks");
  if (options.net) {
    printNet(output, net, options.json);
    return;
  }
  std::int64_t entry = options.since;
  if (!options.follow) {
    printNewEntries(output, journal, entry, options.json);
    return;
  }
  // `since` may be greater than the last entry: new entries must not be left out.
  entry = std::min(entry, net.lastEntry);
  ChangeWatch watch(directory, ulo::ChangeJournal::fileName);
  do
    printNewEntries(output, journal, entry, options.json);
  while (watch.wait());
}

}  // namespace

void addChangeVerbs(Verb& program, Session& session) {
  Verb verb = program.addVerb("changes", "Show what was added, updated and removed");
  auto options = std::make_shared<ChangesOptions>();
  verb.option("--since", options->since, "Only entries after this one")
      .valueName("ENTRY")
      .range(std::int64_t{0}, furthestEntry)
      .showDefault();
  verb.option("--generation", options->generation,
              "The journal that ENTRY belongs to, as --net --json prints it")
      .valueName("ID");
  const Argument follow = verb.flag("--follow", options->follow,
                                    "Print new entries as they are added, until interrupted");
  verb.flag("--net", options->net,
            "One line for each task that was added, updated or removed since then")
      .excludes(follow);
  verb.flag("--json", options->json, "Print JSON objects, one per line; one object for --net");
  verb.footer("A store that was restored or replaced has another generation: entry numbers of the "
              "earlier\none are invalid then, and a program has to compare all tasks.\n"
              "A line has the number of the entry, the local time, the kind of change and the "
              "UID.\n--follow checks when the store's files change, and every " +
              std::to_string(ChangeWatch::longestWait) +
              " seconds.\n"
              "Examples:\n"
              "  ulotask changes --since 120\n"
              "  ulotask changes --since 120 --net --json\n"
              "  ulotask changes --follow | while read entry day time kind uid; do echo $uid; "
              "done");
  verb.run([options, &session] { changes(session, *options); });
}

}  // namespace ulotask
