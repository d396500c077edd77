// Maps applications to commands.
#pragma once

#include <QHash>
#include <QStringList>
#include <QUuid>

#include <optional>

namespace ulo {

// Values that a request inserts into a command.
struct LaunchValues {
  QString file;     // for %f
  QString subject;  // for %s
};

struct Launch {
  QStringList command;  // the program and its arguments
  bool waits = false;   // the command runs until the user has finished with the request
};

// The launch table in the format described in AM_ActionData.h. Of duplicate groups and keys the
// first one counts. Lines that are not a group header, key or comment are ignored, and so are
// groups that are not named by a UUID.
class LaunchTable {
public:
  // Size limit of the file in bytes; a larger file is not read.
  static constexpr qint64 largest = 1024L * 1024;

  explicit LaunchTable(const QByteArray& text);
  // Reads applications.conf from the directories of the user and the system (configFiles). Leaves
  // out files that do not exist and, which is logged, those that cannot be read. A group in an
  // earlier file replaces all groups of the same application in later ones.
  static LaunchTable ofUser();

  // Returns true if the application is in the table or known without an entry. Its entry may still
  // be malformed.
  [[nodiscard]] bool knows(const QString& application) const;
  // Returns nothing and logs the reason if the application is neither in the table nor known
  // without an entry, or if its entry is malformed.
  [[nodiscard]] std::optional<Launch> launch(const QString& application,
                                             const LaunchValues& values) const;

private:
  using Group = QHash<QString, QString>;

  // Adds the groups of a text, except for those of applications that have one.
  void add(const QByteArray& text);

  QHash<QUuid, Group> groups_;
};

// Splits an Exec line into arguments by the quoting rules of desktop entries: arguments are
// separated by blanks; within double quotes, which must enclose a whole argument, a backslash
// escapes " ` $ and \. Field codes are replaced in every argument, quoted or not. Returns an empty
// list and sets `why` if the line violates the rules, for example by an unquoted character that is
// special to a shell.
[[nodiscard]] QStringList commandOf(const QString& exec, const LaunchValues& values, QString& why);

}  // namespace ulo
