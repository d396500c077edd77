#include "include_arrows.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <regex>
#include <sstream>

namespace {

namespace fs = std::filesystem;

std::string nameOf(Library library) {
  return library == sqlite ? "SQLite" : library == qt ? "Qt" : "widgets";
}

class Reader {
public:
  Reader(const fs::path& root, const std::vector<Room>& rooms,
         const std::function<bool(const std::string&)>& isWidget)
      : root_(root), rooms_(rooms), isWidget_(isWidget) {}

  Arrows run(const std::vector<std::string>& folders) {
    checkOrder();
    for (const std::string& folder : folders)
      addFiles(folder);
    for (const std::string& file : files_)
      read(file);
    return std::move(arrows_);
  }

private:
  // Without cycles in the list there are none among the rooms.
  void checkOrder() {
    for (auto room = rooms_.begin(); room != rooms_.end(); ++room)
      for (const std::string_view other : room->mayInclude)
        if (std::none_of(rooms_.begin(), room, [&](const Room& r) { return r.name == other; }))
          fault("list of rooms", 0,
                std::string(room->name) + " may include " + std::string(other) +
                    ", which does not come before it");
  }

  void addFiles(const std::string& folder) {
    for (const auto& entry : fs::recursive_directory_iterator(root_ / folder)) {
      const fs::path& path = entry.path();
      if (entry.is_regular_file() && (path.extension() == ".h" || path.extension() == ".cpp"))
        files_.push_back(path.lexically_relative(root_).generic_string());
    }
    std::sort(files_.begin(), files_.end());
  }

  const Room* roomOf(const std::string& file) const {
    const Room* found = nullptr;
    for (const Room& room : rooms_)
      if (file.rfind(room.prefix, 0) == 0 &&
          (found == nullptr || room.prefix.size() > found->prefix.size()))
        found = &room;
    return found;
  }

  void read(const std::string& file) {
    const Room* const room = roomOf(file);
    if (room == nullptr)
      return fault(file, 1, "no room of the list has this file");
    static const std::regex directive(R"re(^\s*#\s*include\s*(<([^>]*)>|"([^"]*)"))re");
    std::ifstream in(root_ / file);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
      std::smatch match;
      if (!std::regex_search(line, match, directive))
        continue;
      if (match[2].matched)
        library(*room, file, number, match[2]);
      else
        arrow(*room, file, number, match[3]);
    }
  }

  void library(const Room& room, const std::string& file, int line, const std::string& header) {
    const std::string name = header.substr(header.rfind('/') + 1);
    const Library used = header == "sqlite3.h"     ? sqlite
                         : name.rfind('Q', 0) != 0 ? noLibrary
                         : isWidget_(name)         ? widgets
                                                   : qt;
    if ((used & room.libraries) != used)
      fault(file, line, std::string(room.name) + " must not use " + nameOf(used));
  }

  void arrow(const Room& room, const std::string& file, int line, const std::string& header) {
    const std::string target = resolved(file, header);
    if (target.empty())
      return fault(file, line, "\"" + header + "\" is not one file of the tree");
    const Room* const other = roomOf(target);
    if (other == nullptr)
      return fault(file, line, "no room of the list has " + target);
    if (other == &room)
      return;
    ++arrows_.counts[{std::string(room.name), std::string(other->name)}];
    if (std::find(room.mayInclude.begin(), room.mayInclude.end(), other->name) ==
        room.mayInclude.end())
      fault(file, line,
            std::string(room.name) + " must not include " + std::string(other->name) + " (" +
                header + ")");
  }

  // Returns the file that a header's name means: one beside the including file, or the only one in
  // the tree whose path ends with that name. Empty if there is none, or several.
  std::string resolved(const std::string& file, const std::string& header) const {
    const std::string beside = (fs::path(file).parent_path() / header).lexically_normal();
    if (std::binary_search(files_.begin(), files_.end(), beside))
      return beside;
    std::vector<std::string> found;
    const std::string suffix = "/" + header;
    std::copy_if(files_.begin(), files_.end(), std::back_inserter(found),
                 [&](const std::string& path) {
                   return path.size() > suffix.size() &&
                          path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
                 });
    return found.size() == 1 ? found.front() : std::string();
  }

  void fault(const std::string& file, int line, const std::string& reason) {
    arrows_.faults.push_back(file + ":" + std::to_string(line) + ": " + reason);
  }

  fs::path root_;
  const std::vector<Room>& rooms_;
  const std::function<bool(const std::string&)>& isWidget_;
  std::vector<std::string> files_;
  Arrows arrows_;
};

}  // namespace

Arrows readArrows(const fs::path& root, const std::vector<std::string>& folders,
                  const std::vector<Room>& rooms,
                  const std::function<bool(const std::string&)>& isWidget) {
  return Reader(root, rooms, isWidget).run(folders);
}

std::string tableOf(const Arrows& arrows, const std::vector<Room>& rooms) {
  std::ostringstream table;
  for (const Room& from : rooms)
    for (const Room& to : rooms)
      if (const auto count = arrows.counts.find({std::string(from.name), std::string(to.name)});
          count != arrows.counts.end())
        table << std::left << std::setw(20) << from.name << "-> " << std::setw(20) << to.name
              << std::right << std::setw(4) << count->second << '\n';
  return table.str();
}
