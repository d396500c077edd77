#include "broadcast_listener.h"

#include "exit_codes.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace ulotask {
namespace {

int argumentCount = 1;
char programName[] = "ulotask";
char* programArguments[] = {programName, nullptr};

}  // namespace

BroadcastListener::BroadcastListener(const std::vector<std::string>& channels)
    : ready_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      application_(std::make_unique<QCoreApplication>(argumentCount, programArguments)) {
  if (!ready_.isOpen())
    throw Failure(Exit::failed,
                  std::string("broadcasts can't be awaited: ") + std::strerror(errno));
  for (const std::string& name : channels) {
    auto* channel = new QCopChannel(QCString(name.c_str()));
    isConnected_ = isConnected_ && channel->isConnected();
    channel->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, channel, &QObject::deleteLater);
    QObject::connect(channel, &QCopChannel::received, channel,
                     [this, channel](const QCString& message, const QByteArray&) {
                       hear({channel->channel(), message});
                     });
  }
  thread_.start();
}

BroadcastListener::~BroadcastListener() {
  thread_.quit();
  thread_.wait();
}

void BroadcastListener::hear(const Broadcast& broadcast) {
  const std::lock_guard lock(mutex_);
  heard_.push_back(broadcast);
  eventfd_write(ready_.get(), 1);
}

std::vector<Broadcast> BroadcastListener::take() {
  const std::lock_guard lock(mutex_);
  eventfd_t count = 0;
  eventfd_read(ready_.get(), &count);
  return std::exchange(heard_, {});
}

}  // namespace ulotask
