#include "printer.h"

#include "lexer.h"
#include "parser.h"

namespace ulo::odb {
namespace {

std::string place(Position at) {
  return std::to_string(at.line) + ":" + std::to_string(at.column);
}

std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

// The attributes of a node other than its operands.
std::string details(const Node& node) {
  switch (node.op) {
  case Op::integer:
    return " " + std::to_string(node.number);
  case Op::boolean:
    return node.number != 0 ? " true" : " false";
  case Op::text:
    return " " + quoted(node.text);
  case Op::parameter:
    return " :" + std::to_string(node.number);
  case Op::argument:
    return " %" + std::to_string(node.number);
  case Op::variable:
  case Op::assign:
    return " $" + node.text;
  case Op::declareVariable:
    return std::string(" ") + typeName(node.type) + " $" + node.text;
  case Op::setField:
    return " " + (node.fieldByNumber ? std::to_string(node.number) : quoted(node.text));
  case Op::openCursor:
  case Op::openTable:
  case Op::tableExists:
  case Op::getField:
    return " " + quoted(node.text);
  case Op::bufferPut:
    return " " + node.text;
  default:
    return "";
  }
}

void list(const Node& node, int depth, std::vector<std::string>& lines) {
  lines.push_back(std::string(static_cast<std::size_t>(depth) * 2, ' ') + opName(node.op) +
                  details(node) + "  @" + place(node.at));
  for (const NodePtr& operand : node.operands)
    list(*operand, depth + 1, lines);
}

std::string columnLine(const ColumnDeclaration& column) {
  return "  column " + column.name + "  @" + place(column.at);
}

}  // namespace

std::vector<std::string> listTokens(std::string_view text) {
  std::vector<std::string> lines;
  for (const Token& token : tokenizeText(text)) {
    std::string line = place(token.at) + " " + kindName(token.kind);
    switch (token.kind) {
    case TokenKind::number:
    case TokenKind::parameter:
    case TokenKind::argument:
      line += " " + std::to_string(token.number);
      break;
    case TokenKind::text:
      line += " " + quoted(token.text);
      break;
    case TokenKind::end:
      break;
    default:
      line += " " + token.text;
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

std::vector<std::string> listTree(const Script& script) {
  std::vector<std::string> lines;
  for (const ColumnDeclaration& column : script.buffer)
    lines.push_back(std::string("buffer ") + column.name + " " + typeName(column.type) + "  @" +
                    place(column.at));
  list(*script.body, 0, lines);
  return lines;
}

std::vector<std::string> listTree(const Statement& statement) {
  std::vector<std::string> lines;
  const std::string table = statement.table + "  @" + place(statement.tableAt);
  switch (statement.kind) {
  case Statement::Kind::createTable:
    lines.push_back("create table " + table);
    for (const TableColumn& column : statement.columns)
      lines.push_back("  column " + column.name + " " + typeName(column.type) +
                      (column.automatic ? " auto" : "") + "  @" + place(column.at));
    for (const ColumnDeclaration& column : statement.unique)
      lines.push_back("  unique key" + columnLine(column).substr(1));
    break;
  case Statement::Kind::createIndex:
    lines.push_back("create index " + statement.index + " on " + table);
    for (const IndexColumn& column : statement.indexColumns)
      lines.push_back("  column " + column.name + (column.descending ? " desc" : "") + "  @" +
                      place(column.at));
    break;
  case Statement::Kind::insert:
    lines.push_back("insert into " + table);
    for (std::size_t i = 0; i < statement.columns.size(); ++i) {
      lines.push_back(columnLine(statement.columns[i]));
      list(*statement.values[i], 2, lines);
    }
    if (statement.returnUid)
      lines.push_back("  returnuid");
    break;
  }
  return lines;
}

}  // namespace ulo::odb
