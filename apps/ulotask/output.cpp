#include "output.h"

#include "exit_codes.h"
#include "text.h"

#include <QJsonDocument>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace ulotask {
namespace {

constexpr int usualColumns = 80;
constexpr int narrowestLastColumn = 10;
constexpr int columnGap = 2;

// Writes all of `text`. Returns 0 or the error number.
int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count < 0)
      return errno;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

// Escapes U+007F to U+009F, which QJsonDocument leaves unchanged and some terminals interpret. They
// occur only inside strings.
std::string withoutControls(const QByteArray& json) {
  std::string result;
  result.reserve(static_cast<std::size_t>(json.size()));
  for (qsizetype i = 0; i < json.size(); ++i) {
    const auto byte = static_cast<unsigned char>(json[i]);
    const auto next = static_cast<unsigned char>(i + 1 < json.size() ? json[i + 1] : 0);
    if (byte == 0x7F) {
      result += "\\u007f";
    } else if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
      result += next < 0x90 ? "\\u008" : "\\u009";
      result += "0123456789abcdef"[next & 0xFU];
      ++i;
    } else {
      result += static_cast<char>(byte);
    }
  }
  return result;
}

// A reader that has exited is not an error.
void writeResult(std::string_view text) {
  const int error = writeAll(STDOUT_FILENO, text);
  if (error != 0 && error != EPIPE)
    throw Failure(Exit::notWritten,
                  std::string("standard output can't be written: ") + std::strerror(error));
}

std::string padded(const std::string& text, int columns, Table::Align align) {
  const std::string blanks(static_cast<std::size_t>(std::max(0, columns - columnsOf(text))), ' ');
  return align == Table::Align::right ? blanks + text : text + blanks;
}

}  // namespace

void Output::json(const QJsonObject& object) {
  write(withoutControls(QJsonDocument(object).toJson()));
}

void Output::json(const QJsonArray& array) {
  write(withoutControls(QJsonDocument(array).toJson()));
}

void Output::jsonLine(const QJsonObject& object) {
  line(withoutControls(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

void Output::write(std::string_view text) {
  constexpr std::size_t most = 65536;
  if (text.size() >= most) {
    // Not copied.
    finish();
    writeResult(text);
    return;
  }
  pending_ += text;
  if (pending_.size() >= most)
    finish();
}

void Output::finish() {
  const std::string text = std::exchange(pending_, {});
  writeResult(text);
}

void Output::finishQuietly() noexcept {
  static_cast<void>(writeAll(STDOUT_FILENO, pending_));
  pending_.clear();
}

void Output::notice(const std::string& text) {
  finish();
  printError(text);
}

std::optional<int> Output::terminalColumns(int descriptor) {
  if (isatty(descriptor) == 0)
    return std::nullopt;
  winsize size{};
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
    return size.ws_col;
  return usualColumns;
}

void printError(const std::string& text) {
  // A failure cannot be reported anywhere.
  static_cast<void>(writeAll(STDERR_FILENO, "ulotask: " + oneLine(std::string_view(text)) + '\n'));
}

Table::Table(std::vector<Column> columns)
    : columns_(std::move(columns)), terminal_(Output::terminalColumns(STDOUT_FILENO)) {
  for (const Column& column : columns_)
    widths_.push_back(columnsOf(column.title));
}

void Table::measure(const Row& row) {
  // The last column is as wide as each of its cells, or as the terminal.
  for (std::size_t i = 0; i + 1 < columns_.size(); ++i)
    widths_[i] = std::max(widths_[i], columnsOf(row[i]));
}

void Table::printTitles(Output& output) {
  int left = terminal_.value_or(0);
  for (std::size_t i = 0; i + 1 < columns_.size(); ++i) {
    if (terminal_ && columns_[i].widest > 0)
      widths_[i] = std::min(widths_[i], columns_[i].widest);
    left -= widths_[i] + columnGap;
  }
  widths_.back() = std::max(left, narrowestLastColumn);
  Row titles;
  for (const Column& column : columns_)
    titles.emplace_back(column.title);
  print(output, titles);
}

void Table::print(Output& output, const Row& row) const {
  const std::size_t last = columns_.size() - 1;
  const auto shown = [&](std::size_t i) { return terminal_ ? elided(row[i], widths_[i]) : row[i]; };
  std::string line;
  for (std::size_t i = 0; i < last; ++i) {
    line += padded(shown(i), widths_[i], columns_[i].align);
    line.append(columnGap, ' ');
  }
  line += shown(last);
  line.erase(line.find_last_not_of(' ') + 1);
  output.line(line);
}

void printTable(Output& output, Table table, const std::vector<Table::Row>& rows) {
  for (const Table::Row& row : rows)
    table.measure(row);
  table.printTitles(output);
  for (const Table::Row& row : rows)
    table.print(output, row);
}

}  // namespace ulotask
