#include "vobject_library.h"

#include "codec_log.h"
#include "quiet_parser.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <dlfcn.h>
#include <memory>
#include <new>
#include <unordered_map>

namespace {

// The library that was opened last. The loader counts how often it is opened and closed.
void* libraryHandle = nullptr;

constexpr char emptyValue[] = "";

// Addresses of the library's functions, by the literal with their name; null for a function that
// the library lacks. Cleared when the library is opened or closed, since it may be another one
// then.
std::unordered_map<const char*, void*>& addresses() {
  static std::unordered_map<const char*, void*> known;
  return known;
}

// `name` must be a literal. Destructors call this: if memory is exhausted, the address is not kept.
template <typename Function> Function* lookUp(const char* name) noexcept {
  if (libraryHandle == nullptr)
    return nullptr;
  try {
    const auto [place, isNew] = addresses().try_emplace(name, nullptr);
    if (isNew)
      place->second = dlsym(libraryHandle, name);
    return reinterpret_cast<Function*>(place->second);
  } catch (const std::bad_alloc&) {
    return reinterpret_cast<Function*>(dlsym(libraryHandle, name));
  }
}

template <typename Function> Function* require(const char* name) {
  auto* function = lookUp<Function>(name);
  if (function == nullptr)
    codec_log::functionMissing(name);
  return function;
}

struct Free {
  void operator()(char* memory) const { std::free(memory); }
};

}  // namespace

namespace vobject {

void open() {
  addresses().clear();
  libraryHandle = dlopen("libicalvcal.so", RTLD_LAZY);
  if (libraryHandle == nullptr)
    codec_log::libraryNotOpened();
}

void close() {
  addresses().clear();
  if (libraryHandle != nullptr)
    dlclose(libraryHandle);
}

VObject* newVObject(const char* name) {
  auto* function = require<VObject*(const char*)>("newVObject");
  return function == nullptr ? nullptr : function(name);
}

void initPropIterator(VObjectIterator* iterator, VObject* object) {
  if (auto* function = require<void(VObjectIterator*, VObject*)>("initPropIterator"))
    function(iterator, object);
}

int moreIteration(VObjectIterator* iterator) {
  auto* function = require<int(VObjectIterator*)>("moreIteration");
  return function == nullptr ? -1 : function(iterator);
}

VObject* nextVObject(VObjectIterator* iterator) {
  auto* function = require<VObject*(VObjectIterator*)>("nextVObject");
  return function == nullptr ? nullptr : function(iterator);
}

const char* vObjectName(VObject* object) {
  auto* function = require<const char*(VObject*)>("vObjectName");
  return function == nullptr ? nullptr : function(object);
}

const char* vObjectStringZValue(VObject* object) {
  auto* function = require<const char*(VObject*)>("vObjectStringZValue");
  return function == nullptr ? nullptr : function(object);
}

char* vObjectUStringZValue(VObject* object) {
  return narrow(lookUp<const wchar_t*(VObject*)>("vObjectUStringZValue")(object));
}

// Some builds of the library lack writeVObject; writeMemVObject returns the same text.
void writeVObject(std::FILE* stream, VObject* object) {
  if (auto* function = lookUp<void(std::FILE*, VObject*)>("writeVObject")) {
    if (object != nullptr)
      function(stream, object);
    return;
  }
  auto* toMemory = lookUp<char*(char*, int*, VObject*)>("writeMemVObject");
  if (toMemory == nullptr) {
    codec_log::functionMissing("writeVObject");
    return;
  }
  if (object == nullptr)
    return;
  int length = 0;
  char* text = toMemory(nullptr, &length, object);
  if (text != nullptr && std::fwrite(text, 1, std::strlen(text), stream) != std::strlen(text))
    codec_log::textNotWritten();
  std::free(text);
}

namespace {

std::optional<std::string> streamedText(VObject* object) {
  char* bytes = nullptr;
  std::size_t size = 0;
  std::FILE* stream = open_memstream(&bytes, &size);
  if (stream == nullptr) {
    codec_log::textNotWritten();
    return std::nullopt;
  }
  writeVObject(stream, object);
  const bool whole = std::fclose(stream) == 0;
  const std::unique_ptr<char, Free> text(bytes);
  if (!whole)
    codec_log::textNotWritten();
  return whole && size > 0 ? std::optional<std::string>(std::in_place, bytes, size) : std::nullopt;
}

}  // namespace

std::optional<std::string> textOf(VObject* object) {
  return textTask(object)();
}

std::function<std::optional<std::string>()> textTask(VObject* object) {
  auto* const toMemory = lookUp<char*(char*, int*, VObject*)>("writeMemVObject");
  if (toMemory == nullptr || object == nullptr)
    return [text = object == nullptr ? std::nullopt : streamedText(object)] { return text; };
  return [=]() -> std::optional<std::string> {
    int length = 0;
    const std::unique_ptr<char, Free> text(toMemory(nullptr, &length, object));
    if (text == nullptr) {
      codec_log::textNotWritten();
      return std::nullopt;
    }
    return text.get();
  };
}

void cleanVObject(VObject* object) {
  if (auto* function = require<void(VObject*)>("cleanVObject"))
    function(object);
}

VObject* nextVObjectInList(VObject* object) {
  auto* function = require<VObject*(VObject*)>("nextVObjectInList");
  return function == nullptr ? nullptr : function(object);
}

VObject* Parse_MIME_FromFileName(const char* fileName) {
  auto* function = require<VObject*(const char*)>("Parse_MIME_FromFileName");
  const QuietParser quiet;
  return function == nullptr ? nullptr : function(fileName);
}

VObject* Parse_MIME(const char* text, std::size_t length) {
  auto* function = require<VObject*(const char*, unsigned long)>("Parse_MIME");
  const QuietParser quiet;
  return function == nullptr ? nullptr : function(text, length);
}

VObject* addProp(VObject* object, const char* name) {
  if (object == nullptr)
    return nullptr;
  auto* function = require<VObject*(VObject*, const char*)>("addProp");
  return function == nullptr ? nullptr : function(object, name);
}

VObject* addPropValue(VObject* object, const char* name, const QString& value) {
  return addPropBytes(object, name, value.toUtf8());
}

VObject* addPropBytes(VObject* object, const char* name, const QByteArray& value) {
  if (object == nullptr || value.isEmpty())
    return nullptr;
  auto* function = require<VObject*(VObject*, const char*, const char*)>("addPropValue");
  return function == nullptr ? nullptr : function(object, name, value.constData());
}

char* narrow(const wchar_t* text) {
  constexpr wchar_t lineSeparator = 0x2028;
  constexpr wchar_t paragraphSeparator = 0x2029;
  if (text == nullptr)
    return const_cast<char*>(emptyValue);
  const std::size_t length = std::wcslen(text);
  auto* result = static_cast<char*>(std::malloc(length + 1));
  if (result == nullptr) {
    codec_log::valueNotAllocated();
    return nullptr;
  }
  for (std::size_t i = 0; i < length; ++i)
    result[i] = text[i] == lineSeparator        ? '\n'
                : text[i] == paragraphSeparator ? '\r'
                                                : static_cast<char>(text[i] & 0xFF);
  result[length] = '\0';
  return result;
}

void release(char* narrowed) {
  if (narrowed != emptyValue)
    std::free(narrowed);
}

}  // namespace vobject
