// A store on a platform of stand-ins, which record its calls.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "call_record.h"
#include "test_clock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

inline constexpr int full = 12;
inline constexpr int otherFailure = 9;
inline const std::string engine = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";
// 12:00 UTC of a day; the clock of the tests stands here.
inline constexpr int noon = 1141560000;
inline constexpr int lastSecondOfToday = 1141599599;  // 23:59:59 in Berlin

// removeAll is for subclasses.
class Store : public ZTASK_ENG_Model {
public:
  using ZTASK_ENG_Model::removeAll;
};

inline const calls::Answer tablesPresent{0, {{1, 1}}, 1};
inline const calls::Answer withNullCategory{0, {{{}, 1}, {{}, 0}}, 1};
inline const calls::Answer found7{0, {{0, 7}}, 1};
inline const calls::Answer notFound{0, {{1}}, 1};
inline const calls::Answer flagTrue{0, {{1}}, 1};
inline const calls::Answer flagFalse{0, {{0}}, 1};
inline const calls::Answer noCategoryRows{0, {{{}, 0}}, 1};
inline const calls::Answer refused{otherFailure, {}, 0};
inline const calls::Answer refusedAsFull{full, {}, 0};

inline std::vector<std::string> operator+(std::vector<std::string> left,
                                          const std::vector<std::string>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

class StoreCalls : public testing::Test {
protected:
  void SetUp() override { setEngineNow(QDateTime::fromSecsSinceEpoch(noon)); }
  void TearDown() override {
    store_.reset();
    EXPECT_EQ(calls::held(), 0);
    setEngineNow(QDateTime());
  }
  // An open store, whose calls from now on are answered by `script`.
  Store& open(const calls::Script& script = {}) {
    calls::begin(
        {.answers = {{"check_tables", tablesPresent}, {"all_categories", withNullCategory}}});
    store_ = std::make_unique<Store>();
    calls::begin(script);
    return *store_;
  }
  Store& closed() {
    calls::begin({.openResult = otherFailure});
    store_ = std::make_unique<Store>();
    calls::begin({});
    return *store_;
  }

  static ZTASK_ENG_Task milk() {
    ZTASK_ENG_Task task;
    task.setPriority(3);
    task.setStatus(2);
    task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, "work");
    task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, "");
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QString(QChar(0x4f60)) + "a");
    task.setString(ZTASK_ENG_Task::TASK_FIELD_UUID, "u");
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM, QDateTime::fromSecsSinceEpoch(11));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, QDateTime::fromSecsSinceEpoch(22));
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_REVISION, QDateTime::fromSecsSinceEpoch(44));
    return task;
  }

  std::unique_ptr<Store> store_;
};
