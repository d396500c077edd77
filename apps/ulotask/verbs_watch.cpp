#include "TASK_ENG_SyncML.h"
#include "broadcast_listener.h"
#include "change_lines.h"
#include "change_watch.h"
#include "dates.h"
#include "session.h"
#include "text.h"
#include "ulo/data_directory.h"
#include "verbs.h"

#include <QDateTime>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ulotask {
namespace {

struct WatchOptions {
  std::vector<std::string> channels = {TASK_ENG_SyncML::channel};
  bool json = false;
};

void print(Output& output, const Broadcast& broadcast, bool json) {
  const QDateTime now = QDateTime::currentDateTime();
  const QString channel = QString::fromUtf8(broadcast.channel);
  const QString message = QString::fromUtf8(broadcast.message);
  if (json)
    output.jsonLine({{"time", ulo::formatUtc(now)}, {"channel", channel}, {"message", message}});
  else
    output.line("broadcast  " + ulo::formatTimestamp(now).toStdString() + "  " + oneLine(channel) +
                "  " + oneLine(message));
}

void watch(Session& session, const WatchOptions& options) {
  session.store();
  Output& output = session.output;
  const std::string directory = ulo::dataDirectory();
  ulo::ChangeJournal journal(directory);
  std::int64_t entry = 0;
  requireJournal(journal.lastEntry(entry));
  // Before the listener, whose threads inherit the blocked signals.
  ChangeWatch files(directory, ulo::ChangeJournal::fileName);
  BroadcastListener listener(options.channels);
  if (!listener.isConnected())
    output.notice("there is no session bus; broadcasts will not be shown");
  do {
    printNewEntries(output, journal, entry, options.json);
    for (const Broadcast& broadcast : listener.take())
      print(output, broadcast, options.json);
    output.finish();
  } while (files.wait(listener.descriptor()));
}

}  // namespace

void addWatchVerb(Verb& program, Session& session) {
  Verb verb =
      program.addVerb("watch", "Show broadcasts and changes as they happen, until interrupted");
  auto options = std::make_shared<WatchOptions>();
  verb.option("--channel", options->channels, "Listen on this channel instead").showDefault();
  verb.flag("--json", options->json, "Print JSON objects, one per line");
  verb.footer("Each line begins with the number of a journal entry, or with the word broadcast.\n"
              "Example:\n"
              "  ulotask watch");
  verb.run([options, &session] { watch(session, *options); });
}

}  // namespace ulotask
