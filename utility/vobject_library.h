// The vObject library, function by function, as ZVtodoParser opened it. A function that the library
// does not have is logged, and the call gives null unless said otherwise. Nothing else calls the
// library.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdio>

// The library's own types: an object or property, and the state of a walk over properties.
struct VObject;
struct VObjectIterator {
  VObject* start;
  VObject* next;
};

namespace vobject {

VObject* newVObject(const char* name);
void initPropIterator(VObjectIterator* iterator, VObject* object);
// Non-zero while there are properties; -1 when the library lacks the function, so a loop must
// also end on a null property.
int moreIteration(VObjectIterator* iterator);
VObject* nextVObject(VObjectIterator* iterator);
const char* vObjectName(VObject* object);
const char* vObjectStringZValue(VObject* object);
// The value as bytes; see `narrow`. Requires: the library has the function.
char* vObjectUStringZValue(VObject* object);
// Writes the text of the object to the stream.
void writeVObject(std::FILE* stream, VObject* object);
void cleanVObject(VObject* object);
VObject* nextVObjectInList(VObject* object);
VObject* Parse_MIME_FromFileName(const char* fileName);
VObject* Parse_MIME(const char* text, std::size_t length);
// Null for a null object.
VObject* addProp(VObject* object, const char* name);
// The value goes over as UTF-8. Null for a null object and for an empty value.
VObject* addPropValue(VObject* object, const char* name, const QString& value);

// The bytes that the library made wide: U+2028 is a line feed, U+2029 a carriage return, every
// other character its low 8 bits. To be given to `release`. Null without memory.
char* narrow(const wchar_t* text);
// Accepts null.
void release(char* narrowed);

}  // namespace vobject
