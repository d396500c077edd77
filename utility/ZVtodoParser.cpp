// The log texts in this file are contracts: see docs/compatibility.md.
#include "ZVtodoParser.h"

#include "CAL_ENG_FileDirect.h"
#include "codec_log.h"
#include "module_log.h"
#include "todo_reader.h"
#include "todo_writer.h"
#include "vobject_library.h"

#include <memory>
#include <string_view>

namespace codec_log {

void libraryNotOpened() {
  ULO_LOG_ERROR("Failed to open libicalvcal.so!!");
}

void functionMissing(const char* name) {
  ULO_LOG_ERROR("Cannot invoke call %s", name);
}

void valueNotAllocated() {
  ULO_LOG_ERROR("Unable to allocate memory");
}

void textNotWritten() {
  ULO_LOG_ERROR("Unable to write vcard");
}

void textNotParsed() {
  ULO_LOG_ERROR("open object failed!!");
}

void recordNotAllocated() {
  ULO_LOG_ERROR("Memary is full!!");
}

void todoNotRead() {
  ULO_LOG_ERROR("toTaskRec failed!");
}

void charsetFound(const char* name) {
  ULO_LOG_ERROR("Charset is %s", name);
}

void dueDateIgnored() {
  ULO_LOG_ERROR("It's local sync, no due");
}

void fileNotOpened() {
  ULO_LOG_ERROR("Unable to open vcard write");
}

}  // namespace codec_log

namespace {

// The list takes over the records.
void fill(QList<ZTASK_ENG_Task>& tasks, ulo::TodosRead read) {
  for (std::unique_ptr<ZTASK_ENG_Task>& task : read.tasks) {
    tasks.append(task.get());
    static_cast<void>(task.release());
  }
}

}  // namespace

ZVtodoParser::ZVtodoParser() {
  vobject::open();
}

ZVtodoParser::~ZVtodoParser() {
  vobject::close();
}

bool ZVtodoParser::isVtodo(const QString& fileName) {
  return ulo::TodoReader::fromFile(fileName.toUtf8().toStdString()).hasTodo();
}

void ZVtodoParser::readVtodo(const QCString& text, QList<ZTASK_ENG_Task>& tasks) {
  tasks.clear();
  const std::string_view bytes =
      text.isNull() ? std::string_view() : std::string_view(text.constData());
  fill(tasks, ulo::TodoReader::fromMemory(bytes).read());
}

void ZVtodoParser::readVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks) {
  tasks.clear();
  fill(tasks, ulo::TodoReader::fromFile(fileName.toUtf8().toStdString()).read());
}

void ZVtodoParser::writeVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks) {
  CAL_ENG_FileDirect file(fileName);
  if (!file.open(QIODevice::WriteOnly) || file.stream() == nullptr) {
    codec_log::fileNotOpened();
    return;
  }
  ulo::writeTodos(file.stream(), tasks);
}

void ZVtodoParser::writeVtodo(const QString& fileName, ZTASK_ENG_Task* task) {
  if (task == nullptr)
    return;
  QList<ZTASK_ENG_Task> tasks;
  tasks.append(task);
  writeVtodo(fileName, tasks);
}
