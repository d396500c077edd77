// Time zones: each zone of the system's table, at instants around its clock changes. A task keeps
// its due instant when another field is changed in that zone, and a local time that occurs once is
// stored as the corresponding instant.

#include "scenarios.h"
#include "utc_zone.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace company {
namespace {

constexpr const char* zoneTable = "/usr/share/zoneinfo/zone.tab";
// The range that ulotask accepts in every zone.
constexpr qint64 earliest = 5LL * 86400;
constexpr qint64 latest = 2147385600 - 5LL * 86400;

std::vector<std::string> zones() {
  std::ifstream table(zoneTable);
  std::vector<std::string> names;
  for (std::string line; std::getline(table, line);) {
    std::istringstream columns(line);
    std::string country;
    std::string place;
    std::string name;
    if (line.starts_with('#') || !(columns >> country >> place >> name))
      continue;
    names.push_back(name);
  }
  if (names.empty())
    throw std::runtime_error(std::string("no zones in ") + zoneTable);
  return names;
}

// Returns instants around the clock changes of a zone, and some others.
std::vector<qint64> instants(const QTimeZone& zone, std::size_t count, Random& random) {
  constexpr qint64 distances[] = {-7200, -3601, -3600, -1800, -1, 0, 1, 1799, 3599, 3600, 7200};
  const auto changes = zone.transitions(QDateTime::fromSecsSinceEpoch(earliest, ulo::utcZone),
                                        QDateTime::fromSecsSinceEpoch(latest, ulo::utcZone));
  std::vector<qint64> result;
  while (result.size() < count) {
    qint64 instant = std::uniform_int_distribution<qint64>(earliest, latest)(random);
    if (!changes.isEmpty() && random() % 8 != 0) {
      const auto change =
          static_cast<qsizetype>(random() % static_cast<std::size_t>(changes.size()));
      instant =
          changes[change].atUtc.toSecsSinceEpoch() + distances[random() % std::size(distances)];
    }
    result.push_back(std::clamp(instant, earliest, latest));
  }
  return result;
}

// Due instants by UID.
std::map<int, qint64> dueInstants(const Site& site) {
  std::map<int, qint64> result;
  const Outcome outcome = site.ulotask({"list", "--json"});
  for (const QJsonValue& task :
       QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).array())
    result[task["uid"].toInt()] =
        QDateTime::fromString(task["due"].toString(), Qt::ISODate).toSecsSinceEpoch();
  return result;
}

class Zones : public Attack {
public:
  [[nodiscard]] std::string name() const override { return "zones"; }

  [[nodiscard]] std::vector<Case> cases(const Plan& plan) const override {
    std::vector<std::string> names = zones();
    if (!plan.isWhole) {
      std::shuffle(names.begin(), names.end(), plan.random);
      names.resize(4);
      // Zones whose standard time was moved back.
      names.insert(names.end(), {"Asia/Almaty", "Europe/Moscow"});
    }
    const auto count = static_cast<std::size_t>(plan.amount(20, 4));
    std::vector<Case> result;
    for (const std::string& name : names)
      result.push_back({name, [name, count](Site& site, Random& random, Verdict& verdict) {
                          site.reset({});
                          attack(site, name, count, random, verdict);
                        }});
    return result;
  }

private:
  static void attack(Site& site, const std::string& name, std::size_t count, Random& random,
                     Verdict& verdict) {
    const QTimeZone zone(QByteArray::fromStdString(name));
    if (!verdict.require(zone.isValid(), "the zone is known", name))
      return;
    const std::vector<qint64> expected = instants(zone, count, random);
    verdict.runs = static_cast<int>(count);

    Arguments adding = {"add-due"};
    for (const qint64 instant : expected)
      adding.push_back(std::to_string(instant));
    const Outcome added = run(site.storeUser(adding));
    verdict.require(added.code == 0, "tasks can be added", added.err);

    site.variables["TZ"] = name;
    for (std::size_t i = 0; i < count; ++i) {
      const Arguments edit = i % 2 == 0 ? Arguments{"edit", std::to_string(i + 1), "--note", "n"}
                                        : Arguments{"done", std::to_string(i + 1)};
      const Launch launch = site.launch(edit);
      const Outcome outcome = run(launch);
      verdict.requireSoundEnd(launch, outcome);
      verdict.require(outcome.code == 0, "a task can be changed", shown(launch) + outcome.err);
    }
    std::map<int, qint64> found = dueInstants(site);
    for (std::size_t i = 0; i < count; ++i) {
      const qint64 due = found[static_cast<int>(i + 1)];
      verdict.require(due == expected[i], "a due instant outlives a change of another field",
                      name + ": " + std::to_string(expected[i]) + " became " + std::to_string(due));
    }
    addLocally(site, zone, expected, verdict);
  }

  // Adds tasks with the instants entered as local times.
  static void addLocally(Site& site, const QTimeZone& zone, const std::vector<qint64>& instants,
                         Verdict& verdict) {
    constexpr int typed = 3;
    for (int i = 0; i < typed; ++i) {
      const qint64 instant = instants[static_cast<std::size_t>(i)];
      const QDateTime local = QDateTime::fromSecsSinceEpoch(instant, zone);
      const std::string text = local.toString("yyyy-MM-dd HH:mm:ss").toStdString();
      const Launch launch = site.launch({"add", "t", "--due", text, "--json"});
      const Outcome outcome = run(launch);
      verdict.requireSoundEnd(launch, outcome);
      if (!verdict.require(outcome.code == 0, "a local time that occurs is accepted",
                           shown(launch) + outcome.err))
        continue;
      const QJsonObject task =
          QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).object();
      const qint64 due =
          QDateTime::fromString(task["due"].toString(), Qt::ISODate).toSecsSinceEpoch();
      const QDateTime stored = QDateTime::fromSecsSinceEpoch(due, zone);
      verdict.require(stored.toString("yyyy-MM-dd HH:mm:ss").toStdString() == text,
                      "a local time is stored as an instant with this local time",
                      shown(launch) + ": " + std::to_string(due) + " instead of " +
                          std::to_string(instant));
    }
  }
};

}  // namespace

void addZones(Attacks& attacks) {
  attacks.push_back(std::make_unique<Zones>());
}

}  // namespace company
