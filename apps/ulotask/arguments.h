// What the words of the command line stand for. A word that stands for nothing is a Failure.
#pragma once

#include <QDateTime>
#include "task_words.h"

#include <QString>

#include <string>
#include <vector>

namespace ulotask {

// The text of a command-line argument; a Failure when it isn't UTF-8.
QString argumentText(const std::string& argument, const char* name);
// The number that a UID argument stands for: decimal digits, at most 32 bits.
unsigned int argumentUid(const std::string& argument);
// Each UID once, in the order given.
std::vector<unsigned int> argumentUids(const std::vector<std::string>& arguments);

// A date (ulo::parseDate), or the no-date value for "none".
QDateTime argumentDateOrNone(const std::string& text, const char* name);

// The name of a category; "" stands for none and gives a null text.
QString argumentCategory(const std::string& argument);

// The status words as arguments, "-" in the place of blanks, by status code.
std::vector<std::string> statusArguments();
// A status word, with blanks or as in statusArguments.
ulo::Status argumentStatus(const std::string& word);

// 0 to 9, or high, normal or low. A Failure for anything else.
int argumentPriority(const std::string& text);

}  // namespace ulotask
