// Which command stands for an application.
#pragma once

#include <QHash>
#include <QStringList>
#include <QUuid>

#include <optional>

namespace ulo {

// What a request fills into a command.
struct LaunchValues {
  QString file;     // for %f
  QString subject;  // for %s
};

struct Launch {
  QStringList command;  // the program and its arguments
  bool waits = false;   // it runs until the user has done with the request
};

// The launch table, whose form AM_ActionData.h describes. Of groups and keys that come twice the
// first counts. What isn't UTF-8, no group, key or comment, or belongs to no application, is
// passed over.
class LaunchTable {
public:
  // Larger files count as none.
  static constexpr qint64 largest = 1024L * 1024;

  explicit LaunchTable(const QByteArray& text);
  // $XDG_CONFIG_HOME/ulo/applications.conf; empty, which is logged, when it is there and can't be
  // read.
  static LaunchTable ofUser();

  // Whether the application is in the table or known without it; its entry may be wrong.
  [[nodiscard]] bool knows(const QString& application) const;
  // None, which is logged with the reason, for an application that is in neither the table nor the
  // ones that are known without it, and for an entry that is wrong.
  [[nodiscard]] std::optional<Launch> launch(const QString& application,
                                             const LaunchValues& values) const;

private:
  using Group = QHash<QString, QString>;
  QHash<QUuid, Group> groups_;
};

// The words of an Exec line, by the quoting rules of desktop entries: words stand between blanks;
// in double quotes, which enclose a whole word, a backslash makes " ` $ and \ plain. Field codes
// are replaced in each word, quoted or not. Empty, with a reason in `why`, for a line that breaks
// the rules, such as one with a character outside of quotes that a shell would take as its own.
[[nodiscard]] QStringList commandOf(const QString& exec, const LaunchValues& values, QString& why);

}  // namespace ulo
