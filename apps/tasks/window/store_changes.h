// When to look at the store again.
#pragma once

#include "QCopChannel.h"
#include "change_journal.h"
#include "directory_watch.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace tasks {

// Tells that tasks or categories changed, whichever program did it, this one too: by the broadcast
// at the end of a synchronisation, by the journal of changes, and by the store's own file, for what
// happens to categories is in no journal. Reading the store is no change.
class StoreChanges : public QObject {
  Q_OBJECT

public:
  // Changes that come one after another are gathered until none comes for `quiet`, but not longer
  // than `longest`.
  static constexpr std::chrono::milliseconds quiet{50};
  static constexpr std::chrono::milliseconds longest{250};
  // How often it looks where the file system tells nothing.
  static constexpr std::chrono::milliseconds interval{2000};

  // Sees what happens from now on in the data directory of this moment.
  explicit StoreChanges(QObject* parent);
  ~StoreChanges() override;

Q_SIGNALS:
  // Something may be other than before. Never within a call that changes something.
  void changed();

private:
  // What tells one state of a file from another.
  struct FileState {
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0;  // nanoseconds

    bool operator==(const FileState&) const = default;
  };
  using StoreState = std::array<FileState, 2>;

  void hear(const QCString& message);
  void sawFiles();
  void gather();
  void gathered();
  void lookAround();
  bool isOther(bool wasTold);
  [[nodiscard]] FileState stateOf(const char* name) const;
  [[nodiscard]] StoreState storeState() const;

  std::string directory_;
  QCopChannel channel_;
  ulo::DirectoryWatch files_;
  ulo::ChangeJournal journal_;
  std::int64_t entry_ = 0;
  bool isJournalRead_ = true;
  StoreState store_;
  bool wasBroadcast_ = false;
  QTimer quiet_;
  QTimer interval_;
  QElapsedTimer gathering_;
  bool isLate_ = false;                        // it is not waited for quiet any more
  std::unique_ptr<QSocketNotifier> notifier_;  // goes before its descriptor
};

}  // namespace tasks
