// Category names in the form in which the store keeps them.
#pragma once

#include <QByteArray>
#include <QString>

// Returns a name as UTF-8. An unpaired surrogate is encoded in three bytes, like any other code of
// its size, so that different names have different bytes.
QByteArray categoryNameBytes(const QString& name);
// The inverse: returns the name with these bytes, including a leading U+FEFF. Invalid bytes become
// U+FFFD.
QString categoryName(const char* bytes);
