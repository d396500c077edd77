#include "zone_names.h"

#include "component_lines.h"
#include "content_line.h"

#include <QString>

#include <optional>

namespace ulo {
namespace {

QByteArray bytesOf(std::string_view text) {
  return {text.data(), static_cast<qsizetype>(text.size())};
}

// The lines of a VTIMEZONE without its name, folding and line ends.
QByteArray contentOfZone(std::string_view component) {
  QByteArray content;
  LineSplitter lines(component);
  RawLine raw;
  std::string buffer;
  while (lines.next(raw)) {
    const std::string_view line = unfolded(raw, buffer);
    if (!sameName(nameOf(line), "TZID"))
      content.append(line.data(), static_cast<qsizetype>(line.size())).append('\n');
  }
  return content;
}

QByteArray withName(const QByteArray& component, const std::string& name) {
  ComponentLines lines(viewOf(component));
  for (std::size_t line = lines.find("TZID"); line != ComponentLines::none;
       line = lines.find("TZID", line + 1)) {
    const std::optional<ContentLine> content = lines.property(line);
    lines.replace(line, std::string(content->name)
                            .append(content->parameters)
                            .append(":")
                            .append(valueOfText(QString::fromStdString(name))));
  }
  return lines.text();
}

QByteArray componentWithZoneNames(const QByteArray& component, const RenamedZones& renamed) {
  QByteArray result;
  LineSplitter lines(viewOf(component));
  RawLine raw;
  std::string buffer;
  while (lines.next(raw)) {
    const std::string line(unfolded(raw, buffer));
    const std::string replaced = lineWithZoneNames(line, renamed);
    result +=
        replaced == line ? bytesOf(raw.bytes) : bytesOf(foldedLine(replaced, lineEndOf(raw.bytes)));
  }
  return result;
}

}  // namespace

bool ZoneNames::addContent(const std::string& name, const QByteArray& content) {
  if (!contents_.try_emplace(name, content).second)
    return false;
  names_.try_emplace(content, name);
  return true;
}

void ZoneNames::add(const NamedZone& zone) {
  addContent(zone.first, contentOfZone(viewOf(zone.second)));
}

ZoneNames::Zones ZoneNames::take(const std::vector<NamedZone>& zones) {
  Zones result;
  for (const NamedZone& zone : zones) {
    const auto& [id, component] = zone;
    const auto [name, isNew] = nameOf(zone);
    if (name != id)
      result.renamed.emplace(id, name);
    if (isNew)
      result.added.emplace_back(name, name == id ? component : withName(component, name));
  }
  return result;
}

std::pair<std::string, bool> ZoneNames::nameOf(const NamedZone& zone) {
  const auto& [id, component] = zone;
  const QByteArray content = contentOfZone(viewOf(component));
  if (addContent(id, content))
    return {id, true};
  if (id.empty() || contents_.at(id) == content)
    return {id, false};
  if (const auto same = names_.find(content); same != names_.end())
    return {same->second, false};
  const std::string name = freeName(id);
  addContent(name, content);
  return {name, true};
}

std::string ZoneNames::freeName(const std::string& name) {
  int& number = numbers_.try_emplace(name, 1).first->second;
  std::string result;
  do {
    result = name + ' ' + std::to_string(++number);
  } while (contents_.contains(result));
  return result;
}

std::string lineWithZoneNames(const std::string& line, const RenamedZones& renamed) {
  const std::optional<ContentLine> content = parseContentLine(line);
  const std::optional<std::string> id =
      content ? parameter(content->parameters, "TZID") : std::nullopt;
  const auto found = id ? renamed.find(*id) : renamed.end();
  if (found == renamed.end())
    return line;
  return std::string(content->name)
      .append(";TZID=")
      .append(parameterText(found->second))
      .append(withoutParameters(content->parameters, {"TZID"}))
      .append(":")
      .append(content->value);
}

std::vector<QByteArray> withZoneNames(const std::vector<QByteArray>& components,
                                      const RenamedZones& renamed) {
  if (renamed.empty())
    return components;
  std::vector<QByteArray> result;
  result.reserve(components.size());
  for (const QByteArray& component : components)
    result.push_back(componentWithZoneNames(component, renamed));
  return result;
}

}  // namespace ulo
