// Notification of changes in the store.
#pragma once

#include "QCopChannel.h"
#include "ulo/change_journal.h"
#include "ulo/directory_watch.h"

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

// Reports changes of tasks or categories made by any program, including this one. Uses the
// broadcast at the end of a synchronization, the journal of changes, and the store's own file,
// because changes of categories have no journal entry. Reading the store is not a change.
class StoreChanges : public QObject {
  Q_OBJECT

public:
  // Changes in quick succession are combined until none has followed for `quiet`, but for no longer
  // than `longest`.
  static constexpr std::chrono::milliseconds quiet{50};
  static constexpr std::chrono::milliseconds longest{250};
  // The polling interval if the file system reports no changes.
  static constexpr std::chrono::milliseconds interval{2000};

  // Observes the data directory that is set now, from now on.
  explicit StoreChanges(QObject* parent);
  ~StoreChanges() override;

Q_SIGNALS:
  // Emitted when something may have changed. Never emitted within a call that changes something.
  void changed();

private:
  // Distinguishes states of a file.
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
  bool isLate_ = false;                        // `longest` has passed
  std::unique_ptr<QSocketNotifier> notifier_;  // destroyed before its descriptor
};

}  // namespace tasks
