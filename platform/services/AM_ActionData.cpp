#include "AM_ActionData.h"

#include "command.h"
#include "launch_table.h"
#include "temporary_files.h"

bool AM_ActionData::isAvailable() const {
  const ulo::LaunchTable table = ulo::LaunchTable::ofUser();
  return table.knows(application_) && table.launch(application_, {}).has_value();
}

bool AM_ActionData::invoke(bool wait) {
  ulo::TemporaryFiles files;
  files.removeOld();
  const ulo::LaunchValues values{values_.value(QStringLiteral("Files")),
                                 values_.value(QStringLiteral("Subject"))};
  // Recorded before anything can fail, so that the file is deleted in any case.
  std::optional<ulo::TemporaryFiles::Note> temporary;
  if (values_.value(QStringLiteral("AutoDelete")) == QLatin1String("Yes"))
    temporary = files.note(values.file);

  const std::optional<ulo::Launch> launch = ulo::LaunchTable::ofUser().launch(application_, values);
  if (!launch)
    return false;
  const auto ended = [temporary, removes = launch->waits] {
    if (temporary && removes)
      ulo::TemporaryFiles().remove(*temporary);
  };
  if (wait)
    return ulo::runCommand(launch->command, ended);
  return launch->waits ? ulo::followCommand(launch->command, ended)
                       : ulo::startCommand(launch->command);
}
