// Reading and writing vTodo text, compared with the vObject library alone.

#include "ZVtodoParser.h"
#include "dataset.h"
#include "hand_codec.h"
#include "pairs.h"

#include <QFile>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace bench {
namespace {

// A list that owns its records.
struct TodoList : QList<Task> {
  TodoList() { setAutoDelete(true); }
};

// Texts as sent by phones: lengths in 16-bit characters, 0 for none.
struct TextKind {
  const char* name;
  int summary;
  int note;
};
constexpr TextKind kinds[] = {{"short", 20, 0}, {"long", 300, 3000}};
constexpr int counts[] = {1, 100};

std::string contentsOf(const std::string& fileName) {
  std::ostringstream text;
  text << std::ifstream(fileName, std::ios::binary).rdbuf();
  return text.str();
}

// Shared by the benchmarks of one kind and number of texts.
struct Material {
  Material(const std::string& directory, const TextKind& kind, int count)
      : name(std::string(kind.name) + "." + std::to_string(count)), size(count),
        file(directory + "/" + name + ".vcs") {
    TaskSource source;
    for (int i = 0; i < count; ++i) {
      auto task = std::make_unique<Task>(source.next());
      task->setString(Task::TASK_FIELD_SUMMARY, source.text(kind.summary));
      task->setString(Task::TASK_FIELD_NOTE, kind.note == 0 ? QString() : source.text(kind.note));
      tasks.append(task.release());
    }
    parser.writeVtodo(QString::fromStdString(file), tasks);
    text = QCString(contentsOf(file).c_str());
  }

  std::string name;
  int size;
  std::string file;
  ZVtodoParser parser;
  TodoList tasks;
  QCString text;
};

void registerReadingOf(const std::shared_ptr<Material>& material) {
  const Effort effort = effortFor(material->size);
  registerReading<TodoList>(
      {"vtodo.read-memory." + material->name,
       effort,
       double(material->size),
       [material](TodoList& tasks) { material->parser.readVtodo(material->text, tasks); },
       [material](TodoList& tasks) { readTodosFromMemory(material->text, tasks); },
       {}});
  registerReading<TodoList>(
      {"vtodo.read-file." + material->name,
       effort,
       double(material->size),
       [material](TodoList& tasks) {
         material->parser.readVtodo(QString::fromStdString(material->file), tasks);
       },
       [material](TodoList& tasks) { readTodosFromFile(material->file, tasks); },
       {}});
}

// Each call writes a new file: replacing one waits for the disk on some file systems.
void registerWritingOf(const std::shared_ptr<Material>& material) {
  const std::string name = "vtodo.write-file." + material->name;
  const auto fileOf = [material](Side side, int number) {
    return material->file + "." + std::to_string(number) + (side == Side::ours ? "o" : "h");
  };
  const auto write = [=](Side side, int number) {
    if (side == Side::ours)
      material->parser.writeVtodo(QString::fromStdString(fileOf(side, number)), material->tasks);
    else
      writeTodos(fileOf(side, number), material->tasks);
  };
  const auto compare = [=] {
    std::string contents[2];
    for (const Side side : {Side::ours, Side::hand}) {
      write(side, 0);
      contents[side == Side::ours ? 0 : 1] = contentsOf(fileOf(side, 0));
      std::filesystem::remove(fileOf(side, 0));
    }
    if (const std::string difference = differenceOf(contents[0], contents[1]); !difference.empty())
      stop(name, "the two sides write different texts: " + difference);
  };
  const Effort effort = durableEffort();
  registerPaired({name, effort, double(material->size), compare, [](Side) {}, write,
                  [=](Side side) {
                    for (int i = 0; i < effort.calls; ++i)
                      std::filesystem::remove(fileOf(side, i));
                  }});
}

}  // namespace

void registerCodec(const std::string& directory) {
  for (const TextKind& kind : kinds)
    for (const int count : counts) {
      const auto material = std::make_shared<Material>(directory, kind, count);
      registerReadingOf(material);
      registerWritingOf(material);
    }
}

}  // namespace bench
