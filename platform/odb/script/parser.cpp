#include "parser.h"

#include "operations.h"
#include "token_reader.h"

#include <algorithm>
#include <map>

namespace ulo::odb {
namespace {

constexpr std::string_view scriptMark = "sml:";

struct TypeWord {
  std::string_view word;
  Type type;
};
constexpr TypeWord columnTypes[] = {{"integer", Type::integer},
                                    {"bool", Type::boolean},
                                    {"unicode", Type::unicode},
                                    {"varchar", Type::varchar}};
constexpr TypeWord variableTypes[] = {{"cursor", Type::cursor},
                                      {"table", Type::table},
                                      {"tuple", Type::tuple},
                                      {"int", Type::integer},
                                      {"bool", Type::boolean}};

struct BinaryOperator {
  std::string_view symbol;
  Op op;
};
// From lowest to highest precedence; the operators of a row have the same precedence.
const std::vector<std::vector<BinaryOperator>> binaryOperators = {
    {{"||", Op::logicalOr}},
    {{"&&", Op::logicalAnd}},
    {{"==", Op::equal},
     {"!=", Op::notEqual},
     {"<=", Op::lessEqual},
     {">=", Op::greaterEqual},
     {"<", Op::less},
     {">", Op::greater}},
    {{"+", Op::add}, {"-", Op::subtract}},
};

template <std::size_t n> const TypeWord* findWord(const TypeWord (&words)[n], const Token& token) {
  const auto* found = std::find_if(std::begin(words), std::end(words), [&](const TypeWord& word) {
    return token.kind == TokenKind::name && token.text == word.word;
  });
  return found == std::end(words) ? nullptr : found;
}

NodePtr makeNode(Op op, Position at) {
  return std::make_unique<Node>(op, at);
}

// The part that both languages share.
class ParserBase {
public:
  explicit ParserBase(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

protected:
  // Parses a number, a text, true, false, a parameter, or an argument. Returns null if the next
  // token begins none of them.
  NodePtr literal() {
    const Token& token = tokens_.peek();
    switch (token.kind) {
    case TokenKind::number:
      return numberNode(Op::integer, Type::integer);
    case TokenKind::parameter:
      if (token.number >= DB_MAX_PARAMETERS)
        throw Failure(DB_LIMIT, token.at,
                      "parameters are numbered from 0 to " + std::to_string(DB_MAX_PARAMETERS - 1));
      return numberNode(Op::parameter, Type::any);
    case TokenKind::argument:
      return numberNode(Op::argument, Type::integer);
    case TokenKind::text: {
      NodePtr node = makeNode(Op::text, token.at);
      node->type = Type::varchar;
      node->text = tokens_.take().text;
      return node;
    }
    case TokenKind::name:
      if (token.text == "true" || token.text == "false") {
        NodePtr node = makeNode(Op::boolean, token.at);
        node->type = Type::boolean;
        node->number = tokens_.take().text == "true" ? 1 : 0;
        return node;
      }
      return nullptr;
    default:
      return nullptr;
    }
  }

  Type columnType() {
    const TypeWord* word = findWord(columnTypes, tokens_.peek());
    if (word == nullptr)
      tokens_.fail("a column type (integer, bool, unicode or varchar)");
    tokens_.take();
    return word->type;
  }

  // Adds a column. Throws if there are too many or the name exists.
  template <typename Column> static void addColumn(std::vector<Column>& columns, Column column) {
    if (columns.size() == DB_MAX_COLUMNS)
      throw Failure(DB_LIMIT, column.at,
                    "there are more than " + std::to_string(DB_MAX_COLUMNS) + " columns");
    for (const Column& other : columns)
      if (other.name == column.name)
        throw Failure(DB_SYNTAX, column.at, "column '" + column.name + "' is named twice");
    columns.push_back(std::move(column));
  }

  TokenReader tokens_;

private:
  NodePtr numberNode(Op op, Type type) {
    NodePtr node = makeNode(op, tokens_.peek().at);
    node->type = type;
    node->number = tokens_.take().number;
    return node;
  }
};

class ScriptParser : ParserBase {
public:
  using ParserBase::ParserBase;

  Script run() {
    Script script;
    script.body = makeNode(Op::block, tokens_.peek().at);
    while (!tokens_.at(TokenKind::end)) {
      if (atName("declare"))
        declaration(script);
      else
        addStatement(*script.body);
    }
    return script;
  }

private:
  [[nodiscard]] bool atName(std::string_view name) const {
    return tokens_.at(TokenKind::name) && tokens_.peek().text == name;
  }
  void expectName(const std::string& name) {
    if (!atName(name))
      tokens_.fail("'" + name + "'");
    tokens_.take();
  }

  void declaration(Script& script) {
    expectName("declare");
    if (atName("buffer")) {
      tokens_.take();
      expectName("schema");
      const Token& name = tokens_.expect(TokenKind::name, "the name of a schema");
      const auto found = schemas_.find(name.text);
      if (found == schemas_.end())
        throw Failure(DB_UNKNOWN_NAME, name.at, "no schema '" + name.text + "' is declared");
      if (!script.buffer.empty())
        throw Failure(DB_SYNTAX, name.at, "the script has a buffer already");
      script.buffer = found->second;
    } else {
      expectName("schema");
      const Token name = tokens_.expect(TokenKind::name, "the name of a schema");
      if (schemas_.count(name.text) != 0)
        throw Failure(DB_SYNTAX, name.at, "schema '" + name.text + "' is declared twice");
      std::vector<ColumnDeclaration>& columns = schemas_[name.text];
      tokens_.expectSymbol("(");
      do {
        ColumnDeclaration column;
        column.at = tokens_.peek().at;
        column.name = tokens_.expect(TokenKind::name, "the name of a column").text;
        column.type = columnType();
        addColumn(columns, std::move(column));
      } while (tokens_.takeSymbol(","));
      tokens_.expectSymbol(")");
    }
    tokens_.expectSymbol(";");
  }

  NodePtr block() {
    const Nesting nesting(depth_, tokens_.peek().at);
    NodePtr node = makeNode(Op::block, tokens_.peek().at);
    tokens_.expectSymbol("{");
    while (!tokens_.takeSymbol("}")) {
      if (tokens_.at(TokenKind::end))
        tokens_.fail("'}'");
      addStatement(*node);
    }
    return node;
  }

  // A lone ";" is an empty statement: blocks may end in "}" or in "};".
  void addStatement(Node& block) {
    if (tokens_.takeSymbol(";"))
      return;
    block.operands.push_back(statement());
  }

  NodePtr statement() {
    if (atName("while")) {
      NodePtr node = makeNode(Op::loop, tokens_.take().at);
      node->operands.push_back(condition());
      node->operands.push_back(block());
      return node;
    }
    if (atName("if"))
      return conditional();
    NodePtr node = simpleStatement();
    tokens_.expectSymbol(";");
    return node;
  }

  NodePtr condition() {
    tokens_.expectSymbol("(");
    NodePtr node = expression(0);
    tokens_.expectSymbol(")");
    return node;
  }

  NodePtr conditional() {
    const Nesting nesting(depth_, tokens_.peek().at);
    NodePtr node = makeNode(Op::conditional, tokens_.take().at);
    node->operands.push_back(condition());
    node->operands.push_back(block());
    if (atName("else")) {
      tokens_.take();
      node->operands.push_back(atName("if") ? conditional() : block());
    }
    return node;
  }

  NodePtr simpleStatement() {
    const Token& first = tokens_.peek();
    if (const TypeWord* type = findWord(variableTypes, first)) {
      NodePtr node = makeNode(Op::declareVariable, tokens_.take().at);
      node->type = type->type;
      node->text = tokens_.expect(TokenKind::variable, "a variable").text;
      tokens_.expectSymbol("=");
      node->operands.push_back(expression(0));
      return node;
    }
    if (first.kind != TokenKind::variable && first.kind != TokenKind::name)
      tokens_.fail("a statement");
    NodePtr node = expression(0);
    if (node->op == Op::variable) {
      tokens_.expectSymbol("=");
      NodePtr assignment = makeNode(Op::assign, node->at);
      assignment->text = node->text;
      assignment->operands.push_back(expression(0));
      return assignment;
    }
    const bool isOperation =
        std::any_of(std::begin(operations), std::end(operations),
                    [&](const Operation& operation) { return operation.op == node->op; });
    if (!isOperation)
      throw Failure(DB_SYNTAX, node->at, "expected a statement, found a value");
    return node;
  }

  NodePtr expression(std::size_t rank) {
    if (rank == binaryOperators.size())
      return unary();
    NodePtr left = expression(rank + 1);
    for (int length = 1;; ++length) {
      const auto& candidates = binaryOperators[rank];
      const auto found =
          std::find_if(candidates.begin(), candidates.end(),
                       [&](const BinaryOperator& o) { return tokens_.atSymbol(o.symbol); });
      if (found == candidates.end())
        return left;
      // Each further operand deepens the tree by one.
      if (depth_ + length > DB_MAX_NESTING)
        throw Failure(DB_LIMIT, tokens_.peek().at,
                      "the expression has more than " + std::to_string(DB_MAX_NESTING) +
                          " operators in a row");
      NodePtr node = makeNode(found->op, tokens_.take().at);
      node->operands.push_back(std::move(left));
      node->operands.push_back(expression(rank + 1));
      left = std::move(node);
    }
  }

  NodePtr unary() {
    if (!tokens_.atSymbol("!") && !tokens_.atSymbol("-"))
      return primary();
    const Nesting nesting(depth_, tokens_.peek().at);
    const Token& sign = tokens_.take();
    NodePtr node = makeNode(sign.text == "!" ? Op::logicalNot : Op::negate, sign.at);
    node->operands.push_back(unary());
    return node;
  }

  NodePtr primary() {
    if (NodePtr node = literal())
      return node;
    if (tokens_.atSymbol("(")) {
      const Nesting nesting(depth_, tokens_.peek().at);
      return condition();
    }
    if (tokens_.at(TokenKind::name))
      return call(nullptr);
    if (!tokens_.at(TokenKind::variable))
      tokens_.fail("a value");
    NodePtr variable = variableNode();
    if (tokens_.takeSymbol("->"))
      return call(std::move(variable));
    return variable;
  }

  NodePtr variableNode() {
    const Token& token = tokens_.expect(TokenKind::variable, "a variable");
    NodePtr node = makeNode(Op::variable, token.at);
    node->text = token.text;
    return node;
  }

  // Parses an operation on `target`, or a function if `target` is null.
  NodePtr call(NodePtr target) {
    const Token name = tokens_.expect(TokenKind::name, "the name of an operation");
    const auto* operation =
        std::find_if(std::begin(operations), std::end(operations), [&](const Operation& o) {
          return o.name == name.text && (o.of == Type::nothing) == (target == nullptr);
        });
    if (operation == std::end(operations))
      throw Failure(DB_SYNTAX, name.at,
                    std::string("no ") + (target ? "operation" : "function") + " is called '" +
                        name.text + "'");
    NodePtr node = makeNode(operation->op, name.at);
    node->type = operation->gives;
    if (target)
      node->operands.push_back(std::move(target));
    tokens_.expectSymbol("(");
    for (int i = 0; i < operation->arguments; ++i) {
      if (i > 0)
        tokens_.expectSymbol(",");
      argument(*node, operation->kinds[i]);
    }
    tokens_.expectSymbol(")");
    return node;
  }

  void argument(Node& node, Argument kind) {
    switch (kind) {
    case Argument::value: {
      const Nesting nesting(depth_, tokens_.peek().at);
      node.operands.push_back(expression(0));
      break;
    }
    case Argument::tuple:
      node.operands.push_back(variableNode());
      break;
    case Argument::quoted:
      node.text = quotedName("a name in quotes");
      break;
    case Argument::field:
      if (tokens_.at(TokenKind::number)) {
        node.fieldByNumber = true;
        node.number = tokens_.take().number;
      } else {
        node.text = quotedName("a column's name in quotes or a number");
      }
      break;
    case Argument::plainName:
      node.text = tokens_.expect(TokenKind::name, "the name of a buffer column").text;
      break;
    }
  }

  // With or without the database's name in front.
  std::string quotedName(const char* what) {
    const Token& token = tokens_.expect(TokenKind::text, what);
    if (token.text.substr(token.text.find('.') + 1).size() > DB_MAX_NAME)
      throw Failure(DB_LIMIT, token.at,
                    "a name is longer than " + std::to_string(DB_MAX_NAME) + " bytes");
    return token.text;
  }

  std::map<std::string, std::vector<ColumnDeclaration>> schemas_;
  int depth_ = 0;
};

// Keywords of the SQL-like language are not case-sensitive.
class StatementParser : ParserBase {
public:
  using ParserBase::ParserBase;

  Statement run() {
    Statement statement;
    if (takeWord("create")) {
      if (takeWord("table"))
        createTable(statement);
      else if (takeWord("index"))
        createIndex(statement);
      else
        tokens_.fail("'table' or 'index'");
    } else if (takeWord("insert")) {
      insert(statement);
    } else {
      tokens_.fail("'create' or 'insert'");
    }
    tokens_.takeSymbol(";");
    if (!tokens_.at(TokenKind::end))
      tokens_.fail("the end of the text");
    return statement;
  }

private:
  [[nodiscard]] bool atWord(std::string_view word) const {
    const Token& token = tokens_.peek();
    return token.kind == TokenKind::name &&
           std::equal(token.text.begin(), token.text.end(), word.begin(), word.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
  }
  bool takeWord(std::string_view word) {
    if (!atWord(word))
      return false;
    tokens_.take();
    return true;
  }
  void expectWord(const std::string& word) {
    if (!takeWord(word))
      tokens_.fail("'" + word + "'");
  }

  // [main.]name
  void tableName(Statement& statement) {
    statement.tableAt = tokens_.peek().at;
    statement.table = tokens_.expect(TokenKind::name, "the name of a table").text;
    if (statement.table == "main" && tokens_.takeSymbol("."))
      statement.table = tokens_.expect(TokenKind::name, "the name of a table").text;
  }

  template <typename Item> void list(Item item) {
    tokens_.expectSymbol("(");
    do
      item();
    while (tokens_.takeSymbol(","));
    tokens_.expectSymbol(")");
  }

  ColumnDeclaration columnName() {
    ColumnDeclaration column;
    column.at = tokens_.peek().at;
    column.name = tokens_.expect(TokenKind::name, "the name of a column").text;
    return column;
  }

  void createTable(Statement& statement) {
    statement.kind = Statement::Kind::createTable;
    tableName(statement);
    list([&] {
      const Position at = tokens_.peek().at;
      if (takeWord("unique")) {
        expectWord("key");
        if (!statement.unique.empty())
          throw Failure(DB_SYNTAX, at, "the table has a unique key already");
        list([&] { addColumn(statement.unique, columnName()); });
        return;
      }
      TableColumn column;
      static_cast<ColumnDeclaration&>(column) = columnName();
      column.type = columnType();
      column.automatic = takeWord("auto");
      addColumn(statement.columns, std::move(column));
    });
  }

  void createIndex(Statement& statement) {
    statement.kind = Statement::Kind::createIndex;
    statement.index = tokens_.expect(TokenKind::name, "the name of an index").text;
    if (statement.index == "main" && tokens_.takeSymbol("."))
      statement.index = tokens_.expect(TokenKind::name, "the name of an index").text;
    expectWord("on");
    tableName(statement);
    list([&] {
      const ColumnDeclaration column = columnName();
      addColumn(statement.indexColumns, IndexColumn{column.name, takeWord("desc"), column.at});
    });
  }

  void insert(Statement& statement) {
    statement.kind = Statement::Kind::insert;
    expectWord("into");
    tableName(statement);
    list([&] {
      TableColumn column;
      static_cast<ColumnDeclaration&>(column) = columnName();
      addColumn(statement.columns, std::move(column));
    });
    expectWord("values");
    const Position valuesAt = tokens_.peek().at;
    list([&] { statement.values.push_back(value()); });
    if (statement.values.size() != statement.columns.size())
      throw Failure(DB_SYNTAX, valuesAt,
                    "there are " + std::to_string(statement.columns.size()) + " columns and " +
                        std::to_string(statement.values.size()) + " values");
    statement.returnUid = takeWord("returnuid");
  }

  NodePtr value() {
    if (NodePtr node = literal())
      return node;
    const Position at = tokens_.peek().at;
    if (tokens_.takeSymbol("-")) {
      NodePtr node = literal();
      if (!node || node->op != Op::integer)
        tokens_.fail("a number");
      node->number = -node->number;
      node->at = at;
      return node;
    }
    if (!takeWord("get_null_varchar"))
      tokens_.fail("a value");
    tokens_.expectSymbol("(");
    tokens_.expectSymbol(")");
    NodePtr node = makeNode(Op::nullVarchar, at);
    node->type = Type::null;
    return node;
  }
};

std::size_t scriptMarkEnd(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  if (start == std::string_view::npos || text.substr(start, scriptMark.size()) != scriptMark)
    return 0;
  return start + scriptMark.size();
}

}  // namespace

bool isScript(std::string_view text) {
  return scriptMarkEnd(text) != 0;
}

std::vector<Token> tokenizeText(std::string_view text) {
  // Blanks replace the prefix to keep the column numbers right.
  const std::size_t markEnd = scriptMarkEnd(text);
  std::string words(text);
  if (markEnd != 0)
    words.replace(markEnd - scriptMark.size(), scriptMark.size(), scriptMark.size(), ' ');
  return tokenize(words);
}

Script parseScript(std::string_view text) {
  return ScriptParser(tokenizeText(text)).run();
}

Statement parseStatement(std::string_view text) {
  return StatementParser(tokenizeText(text)).run();
}

}  // namespace ulo::odb
