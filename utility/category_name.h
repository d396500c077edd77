// Names of categories as the store keeps them.
#pragma once

#include <QByteArray>
#include <QString>

// The bytes of a name: its UTF-8. Half of a surrogate pair has no UTF-8; it takes the three bytes
// that its code would have, so that two names never become one.
QByteArray categoryNameBytes(const QString& name);
// The name whose bytes these are, unit by unit; a byte order mark at its beginning belongs to it.
// Bytes that are not valid become U+FFFD.
QString categoryName(const char* bytes);
