// What the program says: results on standard output, all else on standard error.
#pragma once

#include <QJsonArray>
#include <QJsonObject>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ulotask {

class Output {
public:
  // Collects results; they are written by finish().
  void write(std::string_view text) { pending_ += text; }
  void line(std::string_view text) {
    write(text);
    write("\n");
  }
  // The value as JSON. Nothing but ASCII is written raw that a terminal could obey.
  void json(const QJsonObject& object);
  void json(const QJsonArray& array);
  void jsonLine(const QJsonObject& object);  // the same in one line

  // Writes what was collected. A reader that has gone away is no error; anything else that keeps
  // the text from being written is a Failure.
  void finish();
  // The same on the way out of a failure, which a second one must not hide.
  void finishQuietly() noexcept;

  // Says something about the work on standard error, behind the results collected so far.
  void notice(const std::string& text);

  // The columns of the terminal behind a descriptor; none when it is something else.
  [[nodiscard]] static std::optional<int> terminalColumns(int descriptor);

private:
  std::string pending_;
};

// Prints "ulotask: text" on standard error, in one line.
void printError(const std::string& text);

// Rows under titles, in aligned columns two blanks apart. On a terminal the last column is cut to
// what is left of the line, on other outputs nothing is cut.
class Table {
public:
  enum class Align { left, right };
  struct Column {
    const char* title;
    Align align;
    int widest;  // columns on a terminal; 0 for no limit
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}
  // Requires: one cell for each column, each in one line.
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  void print(Output& output) const;

private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace ulotask
