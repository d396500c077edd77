#include "launch_table.h"

#include "AM_ActionData.h"
#include "config_files.h"
#include "module_log.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iterator>

namespace ulo {
namespace {

struct KnownApplication {
  const char* uuid;
  const char* exec;
  bool waits;
};
constexpr KnownApplication known[] = {
    {AM_ActionData::composer, "xdg-email --utf8 --attach %f", false}};

// Returns null if the application is not known without an entry.
const KnownApplication* knownWithout(const QUuid& uuid) {
  const auto* const found =
      std::find_if(std::begin(known), std::end(known), [&](const KnownApplication& entry) {
        return uuid == QUuid(QString::fromLatin1(entry.uuid));
      });
  return found == std::end(known) ? nullptr : found;
}

// Replaces escape sequences. Other backslashes are kept, because the quoting of arguments gives
// some of them a meaning.
QString unescaped(const QString& value) {
  QString result;
  for (qsizetype i = 0; i < value.size(); ++i) {
    const QChar next = value[i] == u'\\' && i + 1 < value.size() ? value[i + 1] : QChar();
    const qsizetype which = next.isNull() ? -1 : QStringLiteral("sntr\\").indexOf(next);
    if (which >= 0) {
      result += QStringLiteral(" \n\t\r\\")[which];
      ++i;
    } else {
      result += value[i];
    }
  }
  return result;
}

// Reads the words of a command line one by one.
class Words {
public:
  explicit Words(const QString& text) : text_(text) {}

  // Returns false at the end of the line, and on an error with the reason in `why`.
  bool next(QString& word, QString& why) {
    while (at_ < text_.size() && text_[at_] == u' ')
      ++at_;
    if (at_ == text_.size())
      return false;
    word.clear();
    return text_[at_] == u'"' ? quoted(word, why) : plain(word, why);
  }

private:
  bool plain(QString& word, QString& why) {
    for (; at_ < text_.size() && text_[at_] != u' '; ++at_) {
      if (QStringLiteral("\t\n\"'\\><~|&;$*?#()`").contains(text_[at_])) {
        why = QStringLiteral("a character of the shell stands outside of quotes: ") + text_[at_];
        return false;
      }
      word += text_[at_];
    }
    return true;
  }

  bool quoted(QString& word, QString& why) {
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] == u'"') {
        ++at_;
        if (at_ == text_.size() || text_[at_] == u' ')
          return true;
        why = QStringLiteral("quotes enclose a part of a word");
        return false;
      }
      const bool escapes = text_[at_] == u'\\' && at_ + 1 < text_.size() &&
                           QStringLiteral("\"`$\\").contains(text_[at_ + 1]);
      at_ += escapes ? 1 : 0;
      word += text_[at_];
    }
    why = QStringLiteral("quotes aren't closed");
    return false;
  }

  const QString& text_;
  qsizetype at_ = 0;
};

// Returns the word with its field codes replaced, or null, with a reason in `why`, for an unknown
// code.
QString filled(const QString& word, const LaunchValues& values, QString& why) {
  QString result = QStringLiteral("");
  for (qsizetype i = 0; i < word.size(); ++i) {
    if (word[i] != u'%') {
      result += word[i];
      continue;
    }
    const QChar code = ++i < word.size() ? word[i] : QChar();
    if (code == u'f')
      result += values.file;
    else if (code == u's')
      result += values.subject;
    else if (code == u'%')
      result += code;
    else {
      why = QStringLiteral("there is no field code %") + (code.isNull() ? QString() : code);
      return {};
    }
  }
  return result;
}

void logWrong(const QString& application, const QString& why) {
  ULO_LOG_ERROR("The launch table's entry %s is wrong: %s", application.toUtf8().constData(),
                why.toUtf8().constData());
}

}  // namespace

QStringList commandOf(const QString& exec, const LaunchValues& values, QString& why) {
  QStringList command;
  Words words(exec);
  for (QString word; words.next(word, why);) {
    const QString argument = filled(word, values, why);
    if (argument.isNull())
      return {};
    command.append(argument);
  }
  if (!why.isEmpty())
    return {};
  if (command.isEmpty() || command.first().isEmpty())
    why = QStringLiteral("there is no program");
  return why.isEmpty() ? command : QStringList();
}

LaunchTable::LaunchTable(const QByteArray& text) {
  add(text);
}

void LaunchTable::add(const QByteArray& text) {
  Group* group = nullptr;
  for (const QByteArray& bytes : text.split('\n')) {
    const QString line = QString::fromUtf8(bytes).trimmed();
    const qsizetype equals = line.indexOf(u'=');
    if (line.startsWith(u'[') && line.endsWith(u']')) {
      const QUuid application(line.mid(1, line.size() - 2));
      const bool isNew = !application.isNull() && !groups_.contains(application);
      group = isNew ? &groups_[application] : nullptr;
    } else if (group != nullptr && !line.startsWith(u'#') && equals > 0) {
      const QString key = line.left(equals).trimmed();
      if (!group->contains(key))
        group->insert(key, unescaped(line.mid(equals + 1).trimmed()));
    }
  }
}

LaunchTable LaunchTable::ofUser() {
  LaunchTable table({});
  for (const std::string& path : configFiles("applications.conf")) {
    QFile file(QFile::decodeName(path.c_str()));
    if (!file.exists())
      continue;
    // Reading something other than a regular file, such as a pipe, might block forever.
    if (QFileInfo(file).isFile() && file.size() <= largest && file.open(QIODevice::ReadOnly))
      table.add(file.read(largest));
    else
      ULO_LOG_ERROR("The launch table %s can't be read", path.c_str());
  }
  return table;
}

bool LaunchTable::knows(const QString& application) const {
  const QUuid uuid(application);
  return groups_.contains(uuid) || knownWithout(uuid) != nullptr;
}

std::optional<Launch> LaunchTable::launch(const QString& application,
                                          const LaunchValues& values) const {
  QString exec;
  QString why;
  Launch launch;
  const QUuid uuid(application);
  if (const auto group = groups_.constFind(uuid); group != groups_.constEnd()) {
    const QString waits = group->value(QStringLiteral("Wait"), QStringLiteral("false"));
    if (waits != QLatin1String("true") && waits != QLatin1String("false"))
      why = QStringLiteral("Wait is neither true nor false");
    launch.waits = waits == QLatin1String("true");
    exec = group->value(QStringLiteral("Exec"));
  } else {
    const KnownApplication* const entry = knownWithout(uuid);
    if (entry == nullptr) {
      ULO_LOG_ERROR("There is no application %s", application.toUtf8().constData());
      return {};
    }
    exec = QString::fromLatin1(entry->exec);
    launch.waits = entry->waits;
  }
  if (why.isEmpty())
    launch.command = commandOf(exec, values, why);
  if (!why.isEmpty()) {
    logWrong(application, why);
    return {};
  }
  return launch;
}

}  // namespace ulo
