#include "cursor.h"

#include "base/failure.h"
#include "sqlite/binding.h"

#include <algorithm>

namespace ulo::odb {

void Tuple::set(int column, const Value& value) {
  if (values_.size() <= static_cast<std::size_t>(column))
    values_.resize(static_cast<std::size_t>(column) + 1);
  values_[static_cast<std::size_t>(column)].assign(value);
  const auto place = std::lower_bound(columns_.begin(), columns_.end(), column);
  if (place == columns_.end() || *place != column)
    columns_.insert(place, column);
}

SqlStatement& Cursor::prepared(std::unique_ptr<SqlStatement>& statement, const std::string& sql) {
  if (!statement)
    statement = std::make_unique<SqlStatement>(database_, sql);
  return *statement;
}

void Cursor::open() {
  close();
  where_ = Where::beforeFirst;
}

void Cursor::close() {
  for (SqlStatement* statement : {walk_.get(), filteredWalk_.get(), byUid_.get()})
    if (statement != nullptr)
      statement->reset();
  for (const auto& [positions, statement] : finds_)
    statement->reset();
  for (const auto& [stretch, statement] : stretches_)
    statement->reset();
  row_ = live_ = nullptr;
  rowIsDeleted_ = false;
  filter_ = nullptr;
  ahead_.clear();
  position_.clear();
  listed_.reset();
  where_ = Where::end;
}

void Cursor::bindFilter(SqlStatement& statement, int firstParameter) {
  for (const Value& value : *filter_)
    bind(statement, firstParameter++, value, value.isText() ? Type::unicode : Type::integer);
}

void Cursor::walkFiltered() {
  live_ = &prepared(filteredWalk_, filteredWalkSql(plan_));
  bindFilter(*live_, 1);
  liveIsSameKey_ = false;
  where_ = Where::walking;
}

std::int64_t Cursor::countFiltered() {
  SqlStatement& statement = prepared(filteredCount_, filteredCountSql(plan_));
  const ResetAtEnd reset(statement);
  bindFilter(statement, 1);
  where_ = Where::end;
  return statement.step() ? statement.integer(0) : 0;
}

void Cursor::deleteAll() {
  SqlStatement& statement = prepared(deleteAll_, deleteAllSql(plan_));
  const ResetAtEnd reset(statement);
  statement.run();
  where_ = Where::end;
}

bool Cursor::find(const Tuple& key) {
  close();
  SqlStatement& statement =
      preparedIn(finds_, key.columns(), database_, [&] { return findSql(plan_, key.columns()); });
  int parameter = 0;
  for (const KeyColumn& part : plan_.source.key)
    if (key.has(part.column))
      bind(statement, ++parameter, key.value(part.column), typeOf(part.column));
  if (!statement.step())
    return false;
  row_ = live_ = &statement;
  liveIsSameKey_ = key.columns().size() == plan_.source.key.size();
  where_ = Where::found;
  return true;
}

// Saves the position of the current row in the order.
void Cursor::keepPosition() {
  position_.clear();
  for (const int place : plan_.orderFetched)
    position_.emplace_back(field(place));
}

// Continues after the saved position. If the live statement holds rows with the same key, reads the
// rest of it and then all rows after that key; otherwise all rows after the position.
void Cursor::goOnAfterKey() {
  if (row_ != nullptr)
    keepPosition();
  const auto keySize = static_cast<int>(plan_.source.key.size());
  int level = keySize - 1;
  ahead_.clear();
  if (!liveIsSameKey_) {
    live_ = nullptr;
    level = static_cast<int>(plan_.order.size()) - 1;
  }
  // The lowest level is read last, so it is first in the list.
  for (int i = 0; i <= level; ++i) {
    const KeyColumn& column = plan_.order[static_cast<std::size_t>(i)];
    const bool isNull = position_[static_cast<std::size_t>(i)].view().isNull();
    // Nulls come first, or last with "desc".
    if (column.descending && !isNull && column.column != plan_.source.table->uid)
      ahead_.push_back({i, Behind::null});
    if (!column.descending || !isNull)
      ahead_.push_back({i, isNull ? Behind::notNull : Behind::value});
  }
  where_ = Where::walking;
}

bool Cursor::startNextStretch() {
  if (ahead_.empty())
    return false;
  const Stretch stretch = ahead_.back();
  ahead_.pop_back();
  const bool filtered = filter_ != nullptr && !filter_->empty();
  SqlStatement& statement =
      preparedIn(stretches_, {stretch.level, stretch.behind, filtered}, database_,
                 [&] { return behindSql(plan_, stretch.level, stretch.behind, filtered); });
  statement.reset();
  const int bound = stretch.level + (stretch.behind == Behind::value ? 1 : 0);
  for (int i = 0; i < bound; ++i) {
    const auto place = static_cast<std::size_t>(i);
    bind(statement, i + 1, position_[place].view(), typeOf(plan_.order[place].column));
  }
  if (filtered)
    bindFilter(statement, bound + 1);
  live_ = &statement;
  // After the last column of the key only the UID differs.
  liveIsSameKey_ = stretch.level == static_cast<int>(plan_.source.key.size());
  return true;
}

bool Cursor::stepLive(bool sameKeyOnly) {
  for (;;) {
    if (live_ != nullptr && (liveIsSameKey_ || !sameKeyOnly)) {
      if (live_->step())
        return true;
      live_ = nullptr;
    }
    if (ahead_.empty())
      return false;
    const bool nextIsSameKey = ahead_.back().level == static_cast<int>(plan_.source.key.size());
    if ((sameKeyOnly && !nextIsSameKey) || !startNextStretch())
      return false;
  }
}

SqlStatement* Cursor::fetchRow(std::int64_t uid) {
  SqlStatement& statement = prepared(byUid_, rowSql(plan_));
  statement.reset();
  bind(statement, 1, Value::integer(uid), Type::integer);
  return statement.step() ? &statement : nullptr;
}

bool Cursor::advance(bool sameKeyOnly) {
  row_ = nullptr;
  rowIsDeleted_ = false;
  if (!plan_.listsFirst) {
    if (stepLive(sameKeyOnly))
      row_ = live_;
    return row_ != nullptr;
  }
  if (!listed_ || listed_->empty()) {
    listed_.emplace();
    while (stepLive(sameKeyOnly))
      listed_->push_back(live_->integer(0));
    liveIsSameKey_ = sameKeyOnly;
    std::reverse(listed_->begin(), listed_->end());
  }
  // A listed row may have been deleted since.
  while (row_ == nullptr && !listed_->empty()) {
    row_ = fetchRow(listed_->back());
    listed_->pop_back();
  }
  return row_ != nullptr;
}

bool Cursor::moveNext() {
  switch (where_) {
  case Where::beforeFirst:
    live_ = &prepared(walk_, walkSql(plan_));
    liveIsSameKey_ = false;
    where_ = Where::walking;
    break;
  case Where::found:
    goOnAfterKey();
    break;
  case Where::walking:
    break;
  case Where::end:
    return false;
  }
  if (advance(false))
    return true;
  where_ = Where::end;
  return false;
}

bool Cursor::moveNextInDup() {
  if (where_ == Where::found) {
    goOnAfterKey();
  } else if (where_ == Where::walking && !liveIsSameKey_ && (row_ != nullptr || rowIsDeleted_)) {
    // The row was reached by walking; stay within its key.
    listed_.reset();
    goOnAfterKey();
  } else if (where_ != Where::walking) {
    return false;
  }
  return advance(true);
}

Value Cursor::field(int place) const {
  if (row_ == nullptr)
    return {};
  return columnValue(*row_, place, typeAt(place));
}

void Cursor::requireRow(const char* what) const {
  if (row_ == nullptr)
    throw Failure(DB_ERROR, std::string(what) + " wants a current row, the cursor stands on none");
}

void Cursor::deleteRow() {
  requireRow("del");
  keepPosition();
  SqlStatement& statement = prepared(delete_, deleteSql(plan_));
  const ResetAtEnd reset(statement);
  bind(statement, 1, field(0), Type::integer);
  statement.run();
  row_ = nullptr;
  rowIsDeleted_ = true;
}

void Cursor::update(const Tuple& data) {
  requireRow("update");
  if (data.columns().empty())
    return;
  SqlStatement& statement = preparedIn(updates_, data.columns(), database_,
                                       [&] { return updateSql(plan_, data.columns()); });
  const ResetAtEnd reset(statement);
  int parameter = 0;
  for (const int column : data.columns())
    bind(statement, ++parameter, data.value(column), typeOf(column));
  const std::int64_t uid = field(0).number;
  bind(statement, ++parameter, Value::integer(uid), Type::integer);
  statement.run();
  // Read the row again to show the update.
  if (plan_.fetched.size() > 1)
    row_ = fetchRow(uid);
}

}  // namespace ulo::odb
