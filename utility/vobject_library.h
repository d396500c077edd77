// The functions of the vObject library, which is opened at run time. Nothing else calls the
// library. A call of a function that the library lacks is logged and returns null, unless noted
// otherwise. Used by one thread of the process at a time, except for the result of textTask.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>

// The library's own types: an object or property, and the position of an iteration over properties.
struct VObject;
struct VObjectIterator {
  VObject* start;
  VObject* next;
};

namespace vobject {

// Opens the library; a failure is logged. All callers share the library that was opened last.
void open();
// Closes the library once. Each open needs one close.
void close();

// Keeps the library open.
class Library {
public:
  Library() { open(); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { close(); }
};

VObject* newVObject(const char* name);
void initPropIterator(VObjectIterator* iterator, VObject* object);
// Returns non-zero while there are more properties, and -1 if the library lacks the function. A
// loop must therefore also end at a null property.
int moreIteration(VObjectIterator* iterator);
VObject* nextVObject(VObjectIterator* iterator);
const char* vObjectName(VObject* object);
const char* vObjectStringZValue(VObject* object);
// Returns the value as bytes; see `narrow`. Requires: the library has the function.
char* vObjectUStringZValue(VObject* object);
// Writes the text of the object to the stream.
void writeVObject(std::FILE* stream, VObject* object);
// Returns the text of the object, or nothing if the object is null, the library cannot write it, or
// memory is short. The latter two are logged.
std::optional<std::string> textOf(VObject* object);
// Returns a function that does the same, once. Another thread may call it while this one uses the
// library for other objects: to write, the library only reads the object and its own constants.
std::function<std::optional<std::string>()> textTask(VObject* object);
void cleanVObject(VObject* object);
VObject* nextVObjectInList(VObject* object);
VObject* Parse_MIME_FromFileName(const char* fileName);
VObject* Parse_MIME(const char* text, std::size_t length);
// Returns null, without a log line, if `object` is null.
VObject* addProp(VObject* object, const char* name);
// Passes the value as UTF-8. Returns null, without a log line, if `object` is null or `value` is
// empty.
VObject* addPropValue(VObject* object, const char* name, const QString& value);
// The same for a value in UTF-8.
VObject* addPropBytes(VObject* object, const char* name, const QByteArray& value);

// Returns the bytes of a text that the library has widened: U+2028 becomes a line feed, U+2029 a
// carriage return, and every other character its low 8 bits. Returns null if memory is short. The
// caller passes the result to `release`.
char* narrow(const wchar_t* text);
// Accepts null.
void release(char* narrowed);

}  // namespace vobject
