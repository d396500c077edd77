#include "bare_library.h"

#include "vcal_guard.h"

#include <algorithm>
#include <cstdlib>
#include <libical/vcc.h>
#include <libical/vobject.h>

namespace {

template <typename Visit> void forEachChild(VObject* object, Visit visit) {
  VObjectIterator iterator;
  initPropIterator(&iterator, object);
  while (moreIteration(&iterator) != 0)
    visit(nextVObject(&iterator));
}

std::string valueOf(VObject* object) {
  if (vObjectValueType(object) == VCVT_RAW)
    return "(raw)";
  const wchar_t* wide = vObjectUStringZValue(object);
  std::string value;
  for (; wide != nullptr && *wide != 0; ++wide)
    value += *wide == 0x2028 ? '\n' : *wide == 0x2029 ? '\r' : static_cast<char>(*wide);
  return value;
}

std::string describe(VObject* property) {
  const std::string name = vObjectName(property);
  std::string charset;
  std::string fields;
  forEachChild(property, [&](VObject* child) {
    if (std::string(vObjectName(child)) == "CHARSET")
      charset = vObjectValueType(child) == VCVT_STRINGZ ? vObjectStringZValue(child) : "";
    if (name == "DALARM" && vObjectValueType(child) == VCVT_USTRINGZ)
      fields += std::string(vObjectName(child)) + "=" + valueOf(child) + ";";
  });
  return name + (charset.empty() ? "" : "[" + charset + "]") +
         (fields.empty() ? "" : "{" + fields + "}") + "=" + valueOf(property);
}

}  // namespace

std::optional<std::vector<TodoProperties>> parseBare(std::string_view text) {
  VObject* object = Parse_MIME(text.data(), text.size());
  if (object == nullptr)
    return std::nullopt;
  std::vector<TodoProperties> todos;
  while (object != nullptr) {
    if (std::string(vObjectName(object)) == "VCALENDAR")
      forEachChild(object, [&](VObject* item) {
        if (std::string(vObjectName(item)) != "VTODO")
          return;
        todos.emplace_back();
        forEachChild(item, [&](VObject* property) { todos.back().push_back(describe(property)); });
      });
    VObject* following = nextVObjectInList(object);
    cleanVObject(object);
    object = following;
  }
  return todos;
}

std::vector<std::string> guardedNames() {
  return {"COMPLETED",  "STATUS", "SUMMARY", "DESCRIPTION",
          "CATEGORIES", "DUE",    "DALARM",  "PRIORITY"};
}

std::optional<std::vector<TodoProperties>> parseGuarded(std::string_view text) {
  ulo::GuardedText guarded = ulo::GuardedText::fromMemory(text, guardedNames());
  if (guarded.isClean())
    return parseBare(text);
  std::optional<std::vector<TodoProperties>> all;
  std::string piece;
  while (guarded.nextPiece(piece)) {
    const auto todos = parseBare(piece);
    if (!todos)
      return std::nullopt;
    if (!all)
      all.emplace();
    all->insert(all->end(), todos->begin(), todos->end());
  }
  return all;
}

std::vector<TodoProperties> onlyGuarded(const std::vector<TodoProperties>& todos) {
  const std::vector<std::string> names = guardedNames();
  std::vector<TodoProperties> result;
  for (const TodoProperties& todo : todos) {
    result.emplace_back();
    for (const std::string& property : todo) {
      const std::string name = property.substr(0, property.find_first_of("[{="));
      const bool hasFields = property.find('{') != property.npos;
      const bool hasValue = hasFields || property.find('=') + 1 < property.size();
      if (hasValue && std::find(names.begin(), names.end(), name) != names.end())
        result.back().push_back(property);
    }
  }
  return result;
}
