#include "list/synchronizer.h"

#include "AM_ActionData.h"

namespace tasks {

namespace {

AM_ActionData request() {
  AM_ActionData request;
  request.setOpenAppUuid(QString::fromLatin1(AM_ActionData::synchronizer));
  request.setAction(QStringLiteral("Synchronize"));
  return request;
}

}  // namespace

bool Synchronizer::isSetUp() {
  return request().isAvailable();
}

bool Synchronizer::start() {
  return request().invoke(false);
}

}  // namespace tasks
