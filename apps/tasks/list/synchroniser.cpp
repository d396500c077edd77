#include "list/synchroniser.h"

#include "AM_ActionData.h"

namespace tasks {

namespace {

AM_ActionData request() {
  AM_ActionData request;
  request.setOpenAppUuid(QString::fromLatin1(AM_ActionData::synchroniser));
  request.setAction(QStringLiteral("Synchronize"));
  return request;
}

}  // namespace

bool Synchroniser::isSetUp() {
  return request().isAvailable();
}

bool Synchroniser::start() {
  return request().invoke(false);
}

}  // namespace tasks
