// The output of the program: results on standard output, everything else on standard error.
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
  // Collects results; they are written by finish(), or when there are many. Fails like finish().
  void write(std::string_view text);
  void line(std::string_view text) {
    write(text);
    write("\n");
  }
  // Writes the value as JSON, with control characters escaped.
  void json(const QJsonObject& object);
  void json(const QJsonArray& array);
  void jsonLine(const QJsonObject& object);  // on one line

  // Writes the collected results to standard output. Fails with Exit::notWritten if that is not
  // possible; a reader that has exited is not an error.
  void finish();
  // The same while a failure is handled: a second failure is ignored.
  void finishQuietly() noexcept;

  // Writes the collected results, then the text to standard error.
  void notice(const std::string& text);

  // The width of the terminal that the descriptor refers to; none if it is not a terminal.
  [[nodiscard]] static std::optional<int> terminalColumns(int descriptor);

private:
  std::string pending_;
};

// Prints "ulotask: text" on standard error, on one line.
void printError(const std::string& text);

// Rows under titles, in aligned columns two blanks apart. On a terminal the last column is
// truncated to the width of the line; elsewhere nothing is truncated. Keeps no rows: all are
// measured first, and printed afterwards.
class Table {
public:
  enum class Align { left, right };
  struct Column {
    const char* title;
    Align align;
    int widest;  // in columns of a terminal; 0 for no limit
  };
  // One cell for each column, each without line breaks.
  using Row = std::vector<std::string>;

  explicit Table(std::vector<Column> columns);
  // Makes room for a row.
  void measure(const Row& row);
  void printTitles(Output& output);
  // Requires: the titles have been printed.
  void print(Output& output, const Row& row) const;

private:
  std::vector<Column> columns_;
  std::vector<int> widths_;
  std::optional<int> terminal_;
};

// Prints a table with these rows.
void printTable(Output& output, Table table, const std::vector<Table::Row>& rows);

}  // namespace ulotask
