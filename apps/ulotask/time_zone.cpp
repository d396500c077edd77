#include "time_zone.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace ulotask {
namespace {

constexpr const char* systemTable = "/usr/share/zoneinfo";
constexpr char fileMagic[] = {'T', 'Z', 'i', 'f'};

bool isZoneFile(const std::string& path) {
  char start[sizeof fileMagic] = {};
  std::ifstream(path, std::ios::binary).read(start, sizeof start);
  return std::equal(std::begin(start), std::end(start), std::begin(fileMagic));
}

// The format of POSIX.1-2017, 8.3.
bool isRule(const std::string& value) {
  const QString name = "([A-Za-z]{3,}|<[A-Za-z0-9+-]{3,}>)";
  const QString offset = "[+-]?[0-9]{1,3}(:[0-9]{1,2}){0,2}";
  const QString date = ",(J[0-9]{1,3}|[0-9]{1,3}|M[0-9]{1,2}\\.[1-5]\\.[0-6])(/" + offset + ")?";
  const QString rule = name + offset + "(" + name + "(" + offset + ")?(" + date + date + ")?)?";
  return QRegularExpression(QRegularExpression::anchoredPattern(rule))
      .match(QString::fromStdString(value))
      .hasMatch();
}

}  // namespace

bool namesTimeZone(const std::string& value) {
  const std::string name = value.substr(value.rfind(':', 0) == 0 ? 1 : 0);
  if (name.empty() || name == "UTC" || name == "GMT")
    return true;
  if (name[0] == '/')
    return isZoneFile(name);
  const char* table = std::getenv("TZDIR");
  const std::string directory = table == nullptr || *table == '\0' ? systemTable : table;
  return isZoneFile(directory + "/" + name) || isRule(name);
}

}  // namespace ulotask
