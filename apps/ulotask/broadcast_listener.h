// Receives broadcasts on a separate thread.
#pragma once

#include "QCopChannel.h"
#include "ulo/descriptor.h"

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

  // False if there is no session bus. Nothing is received then.
  [[nodiscard]] bool isConnected() const { return isConnected_; }
  // Readable while take() has something to return.
  [[nodiscard]] int descriptor() const { return ready_.get(); }
  // Returns the broadcasts received since the last call, in order.
  std::vector<Broadcast> take();

private:
  void hear(const Broadcast& broadcast);

  ulo::Descriptor ready_;
  std::mutex mutex_;
  std::vector<Broadcast> heard_;
  bool isConnected_ = true;
  // Required by the event loop of the thread.
  std::unique_ptr<QCoreApplication> application_;
  QThread thread_;
};

}  // namespace ulotask
