#include "site.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>

namespace company {
namespace {

namespace fs = std::filesystem;

constexpr const char* preloadVariable = "LD_PRELOAD";

QJsonDocument parsed(const QByteArray& text) {
  QJsonParseError error;
  QJsonDocument document = QJsonDocument::fromJson(text, &error);
  if (error.error != QJsonParseError::NoError)
    throw std::runtime_error("not JSON: " + text.left(200).toStdString());
  return document;
}

QJsonArray parsedArray(const std::string& json) {
  const QJsonDocument document = parsed(QByteArray::fromStdString(json));
  if (!document.isArray())
    throw std::runtime_error("not a JSON array: " + json.substr(0, 200));
  return document.array();
}

// Replaces a value that differs between runs, but keeps whether it is set.
void forgetValue(QJsonObject& object, const QString& name) {
  if (object.contains(name))
    object[name] = !object[name].isNull();
}

std::string difference(const char* what, const std::vector<std::string>& found,
                       const std::vector<std::string>& expected) {
  if (found == expected)
    return {};
  std::string text =
      std::to_string(found.size()) + " " + what + " instead of " + std::to_string(expected.size());
  const auto missing = [](const std::vector<std::string>& list,
                          const std::vector<std::string>& of) -> const std::string* {
    for (const std::string& each : of)
      if (std::count(list.begin(), list.end(), each) < std::count(of.begin(), of.end(), each))
        return &each;
    return nullptr;
  };
  if (const std::string* each = missing(found, expected))
    text += "; missing: " + *each;
  if (const std::string* each = missing(expected, found))
    text += "; in excess: " + *each;
  return text;
}

}  // namespace

Sabotage Sabotage::kill(Moment moment, std::int64_t call) {
  Sabotage result;
  result
      .settings_[moment == Moment::before ? "ULO_COMPANY_KILL_BEFORE" : "ULO_COMPANY_KILL_AFTER"] =
      std::to_string(call);
  return result;
}

Sabotage Sabotage::fail(std::int64_t call, const std::string& error, bool persists) {
  Sabotage result;
  result.settings_["ULO_COMPANY_FAIL"] = std::to_string(call);
  result.settings_["ULO_COMPANY_ERROR"] = error;
  if (persists)
    result.settings_["ULO_COMPANY_FAIL_ON"] = "1";
  return result;
}

Sabotage Sabotage::room(std::int64_t bytes, int error) {
  Sabotage result;
  result.settings_["ULO_COMPANY_ROOM"] = std::to_string(bytes);
  result.settings_["ULO_COMPANY_ERROR"] = std::to_string(error);
  return result;
}

Sabotage Sabotage::failAllocation(std::int64_t allocation) {
  Sabotage result;
  result.settings_["ULO_COMPANY_FAIL_ALLOCATION"] = std::to_string(allocation);
  return result;
}

Sabotage Sabotage::jitter(std::uint64_t seed) {
  Sabotage result;
  result.settings_["ULO_COMPANY_JITTER"] = std::to_string(seed % 1'000'000'000);
  return result;
}

Sabotage Sabotage::gate() {
  Sabotage result;
  result.settings_["ULO_COMPANY_GATE"] = std::to_string(gateNumber);
  return result;
}

Sabotage Sabotage::trace(const std::string& file) {
  Sabotage result;
  result.settings_["ULO_COMPANY_TRACE"] = file;
  return result;
}

Sabotage& Sabotage::operator+=(const Sabotage& other) {
  for (const auto& [name, value] : other.settings_)
    settings_[name] = value;
  return *this;
}

std::string Snapshot::storeDifferenceTo(const Snapshot& expected) const {
  if (!trouble.empty())
    return trouble;
  if (std::string text = difference("tasks", tasks, expected.tasks); !text.empty())
    return text;
  if (std::string text = difference("calendar texts", texts, expected.texts); !text.empty())
    return text;
  return difference("categories", categories, expected.categories);
}

std::string Snapshot::differenceTo(const Snapshot& expected) const {
  std::string text = storeDifferenceTo(expected);
  return text.empty() ? difference("changes in the journal", journal, expected.journal) : text;
}

Site::Site(fs::path directory) : directory_(std::move(directory)) {
  reset({});
}

Site::~Site() {
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

void Site::reset(const fs::path& store) {
  fs::remove_all(directory_);
  fs::create_directories(disk());
  for (const char* name : {"home", "state", "tmp"})
    fs::create_directories(directory_ / name);
  if (!store.empty())
    fs::copy(store, data(), fs::copy_options::recursive);
  variables.clear();
}

Environment Site::environment(const Sabotage& sabotage) const {
  Environment result = {{"PATH", "/usr/bin:/bin"},
                        {"HOME", elsewhere("home")},
                        {"TMPDIR", elsewhere("tmp")},
                        {"ULO_DATA_DIR", data()},
                        {"ULO_LOG", elsewhere("log")},
                        {"XDG_STATE_HOME", elsewhere("state")},
                        {"TZ", "UTC"},
                        {"LC_ALL", "C.UTF-8"}};
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"})
    if (const char* value = std::getenv(name))
      result[name] = value;
  for (const auto& [name, value] : variables)
    result[name] = value;
  if (sabotage.settings().empty())
    return result;
  for (const auto& [name, value] : sabotage.settings())
    result[name] = value;
  result["ULO_COMPANY_WATCH"] = disk();
  result[preloadVariable] = ULO_SABOTEUR;
  // The sanitizer runtime is not the first library here, because of the preloaded one.
  result["ASAN_OPTIONS"] += ":verify_asan_link_order=0";
  return result;
}

Launch Site::launch(const Arguments& arguments, const std::string& input,
                    const Sabotage& sabotage) const {
  Launch result{ULOTASK_PROGRAM, arguments, environment(sabotage), input};
  constexpr const char* diskMark = "%disk";
  for (std::string& argument : result.arguments)
    if (const std::size_t at = argument.find(diskMark); at != std::string::npos)
      argument.replace(at, std::string_view(diskMark).size(), disk().string());
  return result;
}

Launch Site::storeUser(const Arguments& arguments, const Sabotage& sabotage) const {
  Launch result = launch(arguments, {}, sabotage);
  result.program = ULO_STORE_USER;
  return result;
}

Outcome Site::ulotask(const Arguments& arguments, const std::string& input,
                      const Sabotage& sabotage) const {
  return run(launch(arguments, input, sabotage));
}

Snapshot Site::look() const {
  Snapshot snapshot;
  const auto printed = [&](const Arguments& arguments) {
    const Outcome outcome = ulotask(arguments);
    if (outcome.code != 0 || outcome.isCrash())
      throw std::runtime_error(shown(launch(arguments)) + " ends with " +
                               std::to_string(outcome.code) + ": " + outcome.out + outcome.err);
    return outcome.out;
  };
  try {
    snapshot.tasks = tasksIn(printed({"list", "--json"}));
    snapshot.categories = categoriesIn(printed({"category", "list", "--json"}));
    snapshot.journal = changesIn(printed({"changes", "--json"}));
    snapshot.texts = textsIn(printed({"export", "--format", "icalendar"}));
    printed({"db", "check"});
  } catch (const std::runtime_error& error) {
    snapshot.trouble = error.what();
  }
  return snapshot;
}

std::vector<std::string> tasksIn(const std::string& json) {
  std::map<std::int64_t, std::string> tasks;
  for (const QJsonValue& value : parsedArray(json)) {
    QJsonObject task = value.toObject();
    for (const char* name : {"uuid", "revision", "end"})
      forgetValue(task, name);
    // Makes a task that is listed twice visible.
    std::string& text = tasks[task["uid"].toInteger()];
    text += QJsonDocument(task).toJson(QJsonDocument::Compact).toStdString();
  }
  std::vector<std::string> result;
  for (const auto& [uid, text] : tasks)
    result.push_back(text);
  return result;
}

std::vector<std::string> categoriesIn(const std::string& json) {
  std::vector<std::string> result;
  for (const QJsonValue& category : parsedArray(json))
    result.push_back(
        QJsonDocument(category.toObject()).toJson(QJsonDocument::Compact).toStdString());
  std::sort(result.begin(), result.end());
  return result;
}

std::vector<std::string> textsIn(const std::string& calendar) {
  std::vector<std::string> result;
  std::istringstream lines(calendar);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("BEGIN:VTODO", 0) == 0)
      result.emplace_back();
    else if (line.rfind("X-TEXT:", 0) == 0 && !result.empty())
      result.back() += line;
  }
  return result;
}

std::vector<std::string> changesIn(const std::string& jsonLines) {
  std::vector<std::string> result;
  std::int64_t last = 0;
  for (const QByteArray& line : QByteArray::fromStdString(jsonLines).split('\n')) {
    if (line.isEmpty())
      continue;
    const QJsonObject change = parsed(line).object();
    const std::int64_t entry = change["entry"].toInteger();
    if (entry <= last)
      throw std::runtime_error("entry " + std::to_string(entry) + " follows entry " +
                               std::to_string(last));
    last = entry;
    result.push_back(change["change"].toString().toStdString() + ' ' +
                     std::to_string(change["uid"].toInteger()));
  }
  return result;
}

std::string shown(const Launch& launch) {
  std::string text;
  for (const auto& [name, value] : launch.environment)
    if (name.starts_with("ULO_COMPANY_") && name != "ULO_COMPANY_WATCH")
      text += name + "=" + value + ' ';
  if (const auto zone = launch.environment.find("TZ");
      zone != launch.environment.end() && zone->second != "UTC")
    text += "TZ=" + zone->second + ' ';
  text += fs::path(launch.program).filename();
  for (const std::string& argument : launch.arguments) {
    const bool plain = !argument.empty() && argument.find_first_of(" \n\"'%") == std::string::npos;
    text += plain ? ' ' + argument : " '" + argument + '\'';
  }
  return text;
}

}  // namespace company
