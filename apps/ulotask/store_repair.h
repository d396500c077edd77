// Defects of a store whose database file is sound, and their repair.
#pragma once

#include "store_questions.h"

#include <set>
#include <string>
#include <vector>

namespace ulo {
class ChangeJournal;
}

namespace ulotask {

class Session;

// Categories of the same name, in the order of their UIDs. The engine finds one of them only.
struct DoubledCategory {
  QString name;  // null for the category of tasks without one
  std::vector<unsigned int> uids;
};
std::vector<DoubledCategory>
doubledCategories(const std::vector<StoreQuestions::Category>& categories);

// Whether the first start of the store was interrupted before its categories were stored.
bool lacksOriginalCategories(const std::vector<StoreQuestions::Category>& categories);

// Moves the tasks of doubled categories to the first one of each name, removes the others, and adds
// the original categories if they are missing. All of it in one transaction, or nothing and a
// Failure. Returns a description of each repair.
std::vector<std::string> repairCategories(Session& session);

// Compares the journal with the tasks that are stored: a task whose last entry tells of its
// addition or change has to be stored, one that was removed must not be. Returns what differs, in
// one sentence; empty if nothing does.
std::string compareJournal(ulo::ChangeJournal& journal, const std::set<unsigned int>& stored);

// A sentence for the data directory if other users may change it, and for each file of the store
// whose mode lets them read or change it.
std::vector<std::string> foreignAccess();

}  // namespace ulotask
