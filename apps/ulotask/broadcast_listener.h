// Hears broadcasts while the program does something else.
#pragma once

#include "QCopChannel.h"
#include "descriptor.h"

#include <QCoreApplication>
#include <QThread>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ulotask {

struct Broadcast {
  QCString channel;
  QCString message;
};

class BroadcastListener {
public:
  explicit BroadcastListener(const std::vector<std::string>& channels);
  BroadcastListener(const BroadcastListener&) = delete;
  BroadcastListener& operator=(const BroadcastListener&) = delete;
  ~BroadcastListener();

  // False when there is no session bus: nothing will be heard.
  [[nodiscard]] bool isConnected() const { return isConnected_; }
  // Can be read while there is something to take.
  [[nodiscard]] int descriptor() const { return ready_.get(); }
  // What was heard since the last call, in its order.
  std::vector<Broadcast> take();

private:
  void hear(const Broadcast& broadcast);

  ulo::Descriptor ready_;
  std::mutex mutex_;
  std::vector<Broadcast> heard_;
  bool isConnected_ = true;
  // The event loop of another thread needs an application.
  std::unique_ptr<QCoreApplication> application_;
  QThread thread_;
};

}  // namespace ulotask
