// Several processes that change the same thing at once.

#include "ulotask_runner.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

int races() {
  constexpr int usual = 20;
  const char* wanted = std::getenv("ULO_RACES");
  return wanted == nullptr ? usual : std::max(1, std::atoi(wanted));
}

class Race : public UlotaskTest {
protected:
  // Starts all processes before waiting for the first. Returns their exit codes.
  std::vector<int> together(const std::vector<Arguments>& commands) {
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const Arguments& arguments : commands) {
      QStringList list;
      for (const std::string& argument : arguments)
        list.append(QString::fromStdString(argument));
      processes.push_back(std::make_unique<QProcess>());
      prepare(*processes.back());
      processes.back()->start(ULOTASK_PROGRAM, list);
    }
    std::vector<int> codes;
    for (const auto& process : processes) {
      constexpr int longestRun = 120'000;  // milliseconds
      EXPECT_TRUE(process->waitForFinished(longestRun));
      EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
      codes.push_back(process->exitCode());
    }
    return codes;
  }
  std::vector<int> together(int count, const Arguments& arguments) {
    return together(std::vector<Arguments>(static_cast<std::size_t>(count), arguments));
  }

  // The number of tasks of each category with this name.
  std::vector<int> categories(const std::string& name) {
    std::vector<int> tasks;
    for (const auto each : succeed({"category", "list", "--json"}).array())
      if (each.toObject()["name"].toString().toStdString() == name)
        tasks.push_back(each.toObject()["tasks"].toInt());
    return tasks;
  }

  // The number of races with a wrong outcome, which tests report.
  int failed_ = 0;
};

using testing::ElementsAre;
using testing::UnorderedElementsAre;

TEST_F(Race, AddsCategoryOnce) {
  add({"first"});
  for (int race = 0; race < races(); ++race) {
    const std::string name = "x" + std::to_string(race);
    const std::vector<int> codes = together(4, {"category", "add", name});
    if (categories(name).size() != 1 ||
        !testing::Matches(UnorderedElementsAre(0, 15, 15, 15))(codes))
      ++failed_;
  }
  EXPECT_EQ(failed_, 0) << "of " << races();
}

TEST_F(Race, TasksShareNewCategory) {
  add({"first"});
  for (int race = 0; race < races(); ++race) {
    const std::string name = "x" + std::to_string(race);
    const std::vector<int> codes = together(4, {"add", "a", "--category", name});
    if (categories(name) != std::vector{4} || !testing::Matches(ElementsAre(0, 0, 0, 0))(codes))
      ++failed_;
  }
  EXPECT_EQ(failed_, 0) << "of " << races();
}

TEST_F(Race, RenamesCategoriesApart) {
  add({"first"});
  for (int race = 0; race < races(); ++race) {
    const std::string number = std::to_string(race);
    succeed({"category", "add", "a" + number, "b" + number});
    const std::vector<int> codes = together({{"category", "rename", "a" + number, "c" + number},
                                             {"category", "rename", "b" + number, "c" + number}});
    if (categories("c" + number).size() != 1 ||
        !testing::Matches(UnorderedElementsAre(0, 15))(codes))
      ++failed_;
  }
  EXPECT_EQ(failed_, 0) << "of " << races();
}

TEST_F(Race, EditsOfDifferentFieldsAreKept) {
  add({"first"});
  for (int race = 0; race < races(); ++race) {
    const std::string text = std::to_string(race);
    const std::vector<int> codes =
        together({{"edit", "1", "--summary", text}, {"edit", "1", "--note", text}});
    const QJsonObject task = succeed({"show", "1", "--json"}).object();
    if (task["summary"].toString().toStdString() != text ||
        task["note"].toString().toStdString() != text || codes != std::vector{0, 0})
      ++failed_;
  }
  EXPECT_EQ(failed_, 0) << "of " << races();
}

TEST_F(Race, DoneIsKeptBesideEdit) {
  add({"first"});
  for (int race = 0; race < races(); ++race) {
    const std::string text = std::to_string(race);
    const bool completed = race % 2 == 0;
    const std::vector<int> codes =
        together({{completed ? "done" : "undone", "1"}, {"edit", "1", "--summary", text}});
    const QJsonObject task = succeed({"show", "1", "--json"}).object();
    if (task["summary"].toString().toStdString() != text ||
        task["completed"].toBool() != completed || codes != std::vector{0, 0})
      ++failed_;
  }
  EXPECT_EQ(failed_, 0) << "of " << races();
}

TEST_F(Race, RemovedTaskStaysRemoved) {
  for (int race = 0; race < races(); ++race) {
    const std::string uid = add({"first"});
    const std::vector<int> codes =
        together({{"edit", uid, "--summary", "changed"}, {"rm", uid}, {"done", uid}});
    const bool answered =
        (codes[0] == 0 || codes[0] == 3) && codes[1] == 0 && (codes[2] == 0 || codes[2] == 3);
    if (!answered || ulotask({"show", uid}).code != 3)
      ++failed_;
  }
  EXPECT_EQ(failed_, 0) << "of " << races();
  EXPECT_EQ(succeed({"list", "--json"}).array().size(), 0);
}

}  // namespace
