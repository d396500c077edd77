// The values of command-line arguments. An argument without a valid value is a Failure with
// Exit::usage.
#pragma once

#include "task_words.h"

#include <QDateTime>
#include <QString>

#include <string>
#include <vector>

namespace ulotask {

// The text of an argument, which must be UTF-8. `name` names it in the message.
QString argumentText(const std::string& argument, const char* name);
// A UID: decimal digits, at most 32 bits.
unsigned int argumentUid(const std::string& argument);
// Each UID once, in the order given.
std::vector<unsigned int> argumentUids(const std::vector<std::string>& arguments);

// A date (ulo::parseDate), or the no-date value for "none".
QDateTime argumentDateOrNone(const std::string& text, const char* name);

// The name of a category; a null text for "", which stands for none.
QString argumentCategory(const std::string& argument);

// The status words as they are typed, with "-" in place of blanks, in the order of ulo::statuses.
std::vector<std::string> statusArguments();
// A status word, with blanks or as in statusArguments.
ulo::Status argumentStatus(const std::string& word);

// The number of a priority: 0 to 9, or high, normal or low.
int argumentPriority(const std::string& text);

}  // namespace ulotask
