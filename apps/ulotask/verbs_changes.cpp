#include "change_journal.h"
#include "change_watch.h"
#include "data_directory.h"
#include "engine_identifier.h"
#include "exit_codes.h"
#include "session.h"
#include "task_format.h"
#include "verbs.h"

#include <QDateTime>

#include <algorithm>

namespace ulotask {
namespace {

struct ChangesOptions {
  std::int64_t since = 0;
  bool follow = false;
  bool net = false;
  bool json = false;
};

// What numbers in JSON carry, and no store ever reaches.
constexpr std::int64_t furthestEntry = (std::int64_t{1} << 53) - 1;

struct KindWord {
  ulo::ChangeType type;
  const char* word;
};
constexpr KindWord kindWords[] = {{ulo::ChangeType::added, "added"},
                                  {ulo::ChangeType::updated, "updated"},
                                  {ulo::ChangeType::removed, "removed"}};

const char* wordOf(ulo::ChangeType type) {
  return std::find_if(std::begin(kindWords), std::end(kindWords),
                      [&](const KindWord& entry) { return entry.type == type; })
      ->word;
}

void requireJournal(bool done) {
  if (!done)
    throw Failure(Exit::failed, "the change journal can't be read; the log says why");
}

std::string columns(std::int64_t entry, const std::string& time, const char* kind,
                    std::uint32_t uid) {
  constexpr std::size_t entryColumns = 6;
  constexpr std::size_t kindColumns = 7;
  std::string number = std::to_string(entry);
  number.insert(0, entryColumns - std::min(entryColumns, number.size()), ' ');
  std::string word = kind;
  word.resize(kindColumns, ' ');
  return number + "  " + time + "  " + word + "  " + std::to_string(uid);
}

void print(Output& output, const ulo::Change& change, bool json) {
  const QDateTime time = QDateTime::fromSecsSinceEpoch(change.time);
  if (json)
    output.jsonLine({{"entry", static_cast<qint64>(change.entry)},
                     {"time", time.toUTC().toString(Qt::ISODate)},
                     {"change", wordOf(change.type)},
                     {"uid", static_cast<qint64>(change.uid)},
                     {"source", QString::fromStdString(change.source)}});
  else
    output.line(columns(change.entry, time.toString("yyyy-MM-dd HH:mm:ss").toStdString(),
                        wordOf(change.type), change.uid));
}

// Prints what is new behind `entry`, which moves on to the last one.
void printNew(Output& output, ulo::ChangeJournal& journal, std::int64_t& entry, bool json) {
  std::vector<ulo::Change> changes;
  requireJournal(journal.entriesSince(entry, changes));
  for (const ulo::Change& change : changes)
    print(output, change, json);
  if (!changes.empty())
    entry = changes.back().entry;
  output.finish();
}

void printNet(Output& output, const ulo::NetChanges& net, bool json) {
  const std::pair<ulo::ChangeType, const std::vector<std::uint32_t>&> lists[] = {
      {ulo::ChangeType::added, net.added},
      {ulo::ChangeType::updated, net.updated},
      {ulo::ChangeType::removed, net.removed}};
  QJsonObject object{{"lastEntry", static_cast<qint64>(net.lastEntry)},
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
  requireJournal(journal.changesSince(engineIdentifier, options.since, net));
  if (net.incomplete)
    output.notice("the journal doesn't tell all that happened behind entry " +
                  std::to_string(options.since) + ": compare all tasks");
  if (options.net) {
    printNet(output, net, options.json);
    return;
  }
  std::int64_t entry = options.since;
  if (!options.follow) {
    printNew(output, journal, entry, options.json);
    return;
  }
  // No entry is left out because its number is not reached yet.
  entry = std::min(entry, net.lastEntry);
  ChangeWatch watch(directory, ulo::ChangeJournal::fileName);
  do
    printNew(output, journal, entry, options.json);
  while (watch.wait());
}

}  // namespace

void addChangeVerbs(CLI::App& app, Session& session) {
  CLI::App* verb = app.add_subcommand("changes", "Show what was added, updated and removed");
  auto options = std::make_shared<ChangesOptions>();
  verb->add_option("--since", options->since, "Only entries behind this one")
      ->type_name("ENTRY")
      ->check(CLI::Range(std::int64_t{0}, furthestEntry).description(""))
      ->capture_default_str();
  CLI::Option* follow = verb->add_flag("--follow", options->follow,
                                       "Go on with new entries as they come, until interrupted");
  verb->add_flag("--net", options->net,
                 "One line for each task that is new, other or gone since then")
      ->excludes(follow);
  verb->add_flag("--json", options->json, "Print JSON objects, one to a line; one for --net");
  verb->footer("A line has the number of the entry, the local time, the kind of change and the "
               "UID.\n--follow looks when the journal's files change, and every " +
               std::to_string(ChangeWatch::longestWait) +
               " seconds.\n"
               "Examples:\n"
               "  ulotask changes --since 120\n"
               "  ulotask changes --since 120 --net --json\n"
               "  ulotask changes --follow | while read entry day time kind uid; do echo $uid; "
               "done");
  verb->callback([options, &session] { changes(session, *options); });
}

}  // namespace ulotask
