#include "change_lines.h"

#include "dates.h"
#include "exit_codes.h"

#include <QDateTime>

#include <algorithm>

namespace ulotask {
namespace {

struct KindWord {
  ulo::ChangeType type;
  const char* word;
};
constexpr KindWord kindWords[] = {{ulo::ChangeType::added, "added"},
                                  {ulo::ChangeType::updated, "updated"},
                                  {ulo::ChangeType::removed, "removed"}};

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
                     {"time", ulo::formatUtc(time)},
                     {"change", wordOf(change.type)},
                     {"uid", static_cast<qint64>(change.uid)},
                     {"source", QString::fromStdString(change.source)}});
  else
    output.line(columns(change.entry, ulo::formatTimestamp(time).toStdString(), wordOf(change.type),
                        change.uid));
}

}  // namespace

const char* wordOf(ulo::ChangeType type) {
  return std::find_if(std::begin(kindWords), std::end(kindWords),
                      [&](const KindWord& entry) { return entry.type == type; })
      ->word;
}

void requireJournal(bool done) {
  if (!done)
    throw Failure(Exit::failed, "the change journal can't be read; the log says why");
}

void printNewEntries(Output& output, ulo::ChangeJournal& journal, std::int64_t& entry, bool json) {
  std::vector<ulo::Change> changes;
  requireJournal(journal.entriesSince(entry, changes));
  for (const ulo::Change& change : changes)
    print(output, change, json);
  if (!changes.empty())
    entry = changes.back().entry;
  output.finish();
}

}  // namespace ulotask
