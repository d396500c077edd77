// Stores to-dos of iCalendar 2.0 texts that a program imports.
#pragma once

#include "TASK_ENG_Ical.h"
#include "ZTASK_ENG_Model.h"
#include "take_in.h"

#include <QString>
#include <QStringView>

#include <array>
#include <cstdint>
#include <vector>

namespace ulo {

enum class Taken {
  added,
  updated,
  unchanged,  // the to-do contains nothing new
  older,      // the stored task has a later text; it is kept
  repeated,   // another to-do with its uuid follows and is taken instead; `uid` is not set
};

struct TakenIn {
  Taken how = Taken::added;
  unsigned int uid = 0;
  std::vector<ShortenedText> shortened;
};

// Takes in to-dos and recognizes the tasks that are stored already by their uuid. Require that all
// calls are part of one write transaction (WriteTransaction). The operations return results of the
// store; unless it is TASK_ENG_OK, the transaction must be discarded.
//
// A to-do whose uuid is unknown, or that has none, is added with the text that it came with. Its
// revision is its LAST-MODIFIED, or else the current time.
//
// A to-do whose uuid is known updates that task and replaces its text. The fields that changed
// since the stored text get the to-do's values; the others keep the task's, so that changes made
// here are not lost. A to-do that equals the stored text or the present state of the task changes
// nothing, not even the revision, and neither does an earlier state of the stored text: one with an
// earlier LAST-MODIFIED, or with a lower SEQUENCE if one of the two lacks LAST-MODIFIED.
//
// Of several to-dos with one uuid only the last is taken in.
//
// Texts that are too long are shortened in the record; the stored text keeps them whole.
class IcalIntake {
public:
  enum class Known { update, addAgain };
  // With `addAgain`, every to-do is added, with a new uuid if its own is that of a stored task.
  explicit IcalIntake(ZTASK_ENG_Model& store, Known known = Known::update)
      : store_(store), known_(known) {}

  // Announces a to-do that will be taken in, by its uuid. All must be announced, and then be looked
  // up by find().
  void expect(const QString& uuid);
  // Looks up the announced uuids in one pass over the store. Called once.
  [[nodiscard]] int find();
  // The same for to-dos with these uuids.
  [[nodiscard]] int find(const std::vector<QString>& uuids);

  [[nodiscard]] int take(const TASK_ENG_Ical::Todo& todo, TakenIn& taken);

private:
  int add(const TASK_ENG_Ical::Todo& todo, TakenIn& taken);
  int update(unsigned int uid, const TASK_ENG_Ical::Todo& todo, TakenIn& taken);

  // A uuid that was announced. Uuids of any length are kept as digests, because there may be
  // hundreds of thousands.
  using Digest = std::array<std::uint64_t, 2>;
  struct Announced {
    Digest uuid;
    std::uint32_t uid = 0;    // of the task; 0 if none is stored
    std::uint32_t todos = 0;  // that have not been taken in
  };
  static Digest digestOf(QStringView uuid);
  Announced* announced(QStringView uuid);

  ZTASK_ENG_Model& store_;
  Known known_;
  std::vector<Announced> announced_;  // after find() in the order of `uuid`, each once
};

}  // namespace ulo
