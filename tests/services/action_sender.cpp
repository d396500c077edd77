// Sends a request to an application and exits without waiting for it.
// usage: action_sender UUID FILE loop|plain

#include "AM_ActionData.h"

#include <QCoreApplication>

#include <cstring>
#include <memory>

int main(int argc, char** argv) {
  if (argc != 4)
    return 2;
  const auto application =
      std::strcmp(argv[3], "loop") == 0 ? std::make_unique<QCoreApplication>(argc, argv) : nullptr;
  AM_ActionData request;
  request.setOpenAppUuid(argv[1]);
  request.setValue("Files", QString::fromLocal8Bit(argv[2]));
  request.setValue("AutoDelete", "Yes");
  return request.invoke(false) ? 0 : 1;
}
