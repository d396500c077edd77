// Changes by another program.
#pragma once

#include <QProcess>

#include <gtest/gtest.h>

// Runs `ulotask arguments...` on the data directory of this process.
inline void runUlotask(const QStringList& arguments) {
  QProcess process;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("ULO_LOG"), QStringLiteral("none"));
  process.setProcessEnvironment(environment);
  process.start(QStringLiteral(ULOTASK_PROGRAM), arguments);
  EXPECT_TRUE(process.waitForFinished(60'000));
  EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
}
