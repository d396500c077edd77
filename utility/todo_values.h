// The values of a to-do's properties: what vCalendar 1.0 text says, and what a task record stores.
#pragma once

#include "qt2.h"

#include <QDateTime>
#include <QString>

namespace ulo {

// From text.

// Status codes are those of ZTASK_ENG_Task.
constexpr int statusCompleted = 0;
constexpr int statusNeedsAction = 1;
constexpr int statusUnknown = 8;

// Returns the status of the first known word that the text contains, or statusUnknown.
int getStatusValue(const QCString& text);
// Returns the number in the text, or 1 for HIGH, 2 for NORMAL, 3 for LOW and 0 for anything else.
int getPriorityValue(const QCString& text);
// Returns the local date and time, or ZTASK_ENG_Task::noDate() for one before January 2, 1970,
// which stands for "no date" in some texts, and for one that cannot be read. Logs these.
QDateTime dueDateFromText(const QCString& text);
// Sets `text` to the bytes, decoded from the character set with this name in any case. Logs the
// character set. Decodes as Latin-1 if the name is empty or not known, or if the bytes are not
// valid in the character set; returns false only for the last.
bool decodeCharset(const QCString& bytes, const QCString& charsetName, QString& text);

// To text.

// Returns the word for a status code; that of statusNeedsAction if there is none.
const char* statusText(int status);
// Returns the local date as a time at noon UTC, whatever the time of day.
QByteArray dueDateText(const QDateTime& due);
// Returns the time in UTC, or an empty text if the year does not have four digits.
QByteArray dateTimeText(const QDateTime& dateTime);
// Returns true if the text can be written without loss: it has no U+0000 and no unpaired surrogate.
bool isWritable(const QString& text);
// Returns the text with unpaired surrogates replaced by "?", or a null text if it is empty or
// begins with U+0000.
QString wellFormedText(const QString& text);
// Returns the text, up to its first U+0000, in UTF-8 and quoted-printable.
QByteArray encodeText(const QString& text);

// Returns true if the field has a date.
bool isSet(const QDateTime& dateTime);

}  // namespace ulo
