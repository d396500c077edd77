// The store's reading operations and the opening of a store.

#include "dataset.h"
#include "pairs.h"
#include "task_search.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace bench {
namespace {

constexpr int pageSize = 10;
// The distance of the UIDs of single tasks that are read, which spread over the whole table.
constexpr unsigned int uidStride = 7919;

void require(int code) {
  if (code != TASK_ENG_OK)
    throw std::runtime_error("the store answers " + std::to_string(code));
}
void require(bool found) {
  if (!found)
    throw std::runtime_error("the hand-written store finds nothing");
}

struct NamedView {
  View view;
  const char* name;
};
constexpr NamedView views[] = {
    {ZTASK_ENG_Model::TASK_CATEGORY_ALL, "all"},
    {ZTASK_ENG_Model::TASK_CATEGORY_DUE, "due"},
    {ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE, "incomplete"},
    {ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED, "completed"},
};
struct NamedSort {
  Sort sort;
  const char* name;
};
constexpr NamedSort sorts[] = {
    {ZTASK_ENG_Model::TASK_SORT_DUE, "by-due"},
    {ZTASK_ENG_Model::TASK_SORT_PRIORITY, "by-priority"},
};
enum class Position { beginning, middle, end };
struct NamedPosition {
  Position position;
  const char* name;
};
constexpr NamedPosition positions[] = {
    {Position::beginning, "beginning"}, {Position::middle, "middle"}, {Position::end, "end"}};

// The first tasks of pages, each looked up once.
class Starts {
public:
  explicit Starts(Workbench& workbench) : workbench_(workbench) {}

  // Not const, because the store's operation takes a non-const reference.
  Task& at(View view, Sort sort, Position position) {
    const auto key = std::make_tuple(view, sort, position);
    const auto found = starts_.find(key);
    if (found != starts_.end())
      return found->second;
    Uids uids;
    workbench_.hand().ids(uids, view, sort);
    if (uids.isEmpty())
      throw std::runtime_error("the view shows no task");
    const uint last = uids.count() - std::min<uint>(uids.count(), pageSize);
    Task start;
    require(workbench_.hand().get(uids.at(position == Position::beginning ? 0
                                          : position == Position::middle  ? last / 2
                                                                          : last),
                                  start));
    return starts_.emplace(key, start).first->second;
  }

private:
  Workbench& workbench_;
  std::map<std::tuple<View, Sort, Position>, Task> starts_;
};

// The sequence of UIDs. Both sides use the same sequence, each with its own object.
class UidWalk {
public:
  explicit UidWalk(int size) : size_(static_cast<unsigned int>(size)) {}
  unsigned int next() {
    position_ += uidStride;
    return position_ % size_ + 1;
  }

private:
  unsigned int size_;
  unsigned int position_ = 0;
};

void registerOpen(Workbench& bench) {
  const auto open = [&bench](Side side) {
    int count = 0;
    if (side == Side::ours)
      require(OurStore().getCount(count));
    else
      count = HandStore(bench.directory(side)).count();
    return count;
  };
  const auto prepare = [&bench](Side side) {
    bench.close();
    bench.prepareOpen(side);
  };
  registerPaired({"open-close", durableEffort(), 1,
                  [=] {
                    prepare(Side::hand);
                    prepare(Side::ours);
                    if (open(Side::ours) != open(Side::hand))
                      stop("open-close", "ours opens another store");
                  },
                  prepare, [open](Side side, int) { open(side); }, [](Side) {}});
}

void registerSingle(Workbench& bench) {
  const auto oursWalk = std::make_shared<UidWalk>(bench.size());
  const auto handWalk = std::make_shared<UidWalk>(bench.size());
  registerReading<Task>(
      {"getTask",
       effortFor(1),
       0,
       [&bench, oursWalk](Task& task) { require(bench.ours().getTask(oursWalk->next(), task)); },
       [&bench, handWalk](Task& task) { require(bench.hand().get(handWalk->next(), task)); },
       {}});
}

void registerCounts(Workbench& bench) {
  registerReading<int>({"getCount",
                        effortFor(bench.size() / 10),
                        double(bench.size()),
                        [&bench](int& count) { require(bench.ours().getCount(count)); },
                        [&bench](int& count) { count = bench.hand().count(); },
                        {}});
  for (const NamedView& named : views) {
    const View view = named.view;
    registerReading<int>(
        {std::string("getCount.") + named.name,
         effortFor(bench.size() / 10),
         double(bench.size()),
         [&bench, view](int& count) { require(bench.ours().getCount(count, view)); },
         [&bench, view](int& count) { count = bench.hand().count(view); },
         {}});
  }
}

void registerIds(Workbench& bench) {
  registerReading<Uids>({"getAllIDs",
                         effortFor(bench.size() / 5),
                         0,
                         [&bench](Uids& uids) { require(bench.ours().getAllIDs(uids)); },
                         [&bench](Uids& uids) { bench.hand().ids(uids); },
                         {}});
  for (const NamedView& named : views)
    for (const NamedSort& order : sorts) {
      const View view = named.view;
      const Sort sort = order.sort;
      registerReading<Uids>(
          {std::string("getAllIDs.") + named.name + "." + order.name,
           effortFor(bench.size() / 5),
           0,
           [&bench, view, sort](Uids& uids) { require(bench.ours().getAllIDs(uids, view, sort)); },
           [&bench, view, sort](Uids& uids) { bench.hand().ids(uids, view, sort); },
           {}});
    }
}

void registerPages(Workbench& bench) {
  const auto starts = std::make_shared<Starts>(bench);
  for (const NamedView& named : views)
    for (const NamedSort& order : sorts)
      for (const NamedPosition& place : positions) {
        const View view = named.view;
        const Sort sort = order.sort;
        const Position position = place.position;
        registerReading<Tasks>(
            {std::string("page.") + named.name + "." + order.name + "." + place.name,
             effortFor(1),
             0,
             [&bench, starts, view, sort, position](Tasks& tasks) {
               require(bench.ours().getTasks(tasks, starts->at(view, sort, position), pageSize,
                                             view, sort));
             },
             [&bench, starts, view, sort, position](Tasks& tasks) {
               require(bench.hand().page(tasks, starts->at(view, sort, position), pageSize, view,
                                         sort));
             },
             {}});
      }
}

// A range of a fortieth of the period of all dates, which contains about a twentieth of the dated
// tasks.
void registerRanges(Workbench& bench) {
  constexpr int day = 86400;
  const int today = static_cast<int>(QDate::currentDate().startOfDay().toSecsSinceEpoch());
  const int from = today - 36 * day;
  const int to = today - 18 * day;
  const auto add = [&](const char* name, Field field) {
    registerReading<Tasks>({name,
                            effortFor(bench.size() / 20),
                            0,
                            [&bench, field, from, to](Tasks& tasks) {
                              require(bench.ours().getTasks(tasks, field, from, to));
                            },
                            [&bench, field, from, to](Tasks& tasks) {
                              require(bench.hand().range(tasks, field, from, to));
                            },
                            {}});
  };
  add("range.due", Task::TASK_FIELD_DUE);
  add("range.end", Task::TASK_FIELD_END);
}

void registerSearches(Workbench& bench) {
  registerReading<Tasks>(
      {"category",
       effortFor(bench.size() / 20),
       0,
       [&bench](Tasks& tasks) {
         QString category = categoryNames().at(7);
         require(bench.ours().getTasks(tasks, category));
       },
       [&bench](Tasks& tasks) { require(bench.hand().ofCategory(tasks, categoryNames().at(7))); },
       {}});
  const double all = bench.size();
  const Effort effort = effortFor(bench.size());
  for (const auto& [name, text] :
       {std::pair("text", "dentist about"), std::pair("nothing", "no task has this")}) {
    const QString wanted = text;
    const auto hand = [&bench, wanted](Tasks& tasks) { bench.hand().mentioning(tasks, wanted); };
    registerReading<Tasks>({std::string("match.") + name,
                            effort,
                            all,
                            [&bench, wanted](Tasks& tasks) {
                              QString copy = wanted;
                              require(bench.ours().getMatchTasks(tasks, copy));
                            },
                            hand,
                            {}});
    registerReading<Tasks>(
        {std::string("search.") + name,
         effort,
         all,
         [&bench, wanted](Tasks& tasks) {
           bench.ours();
           require(ulo::searchTasks({wanted, {}}, [&](const Task& task) { tasks.append(task); }));
         },
         hand,
         {}});
  }
  const auto example = std::make_shared<Task>();
  example->setStatus(1);
  example->setString(Task::TASK_FIELD_SUMMARY, "MILK");
  registerReading<Tasks>(
      {"match.example",
       effort,
       all,
       [&bench, example](Tasks& tasks) { require(bench.ours().getMatchTasks(tasks, *example)); },
       [&bench, example](Tasks& tasks) { bench.hand().resembling(tasks, *example); },
       {}});
  // An example without conditions matches every task.
  const auto nothing = std::make_shared<Task>();
  registerReading<Tasks>(
      {"getAllTasks", effort, all,
       [&bench, nothing](Tasks& tasks) { require(bench.ours().getMatchTasks(tasks, *nothing)); },
       [&bench](Tasks& tasks) { bench.hand().all(tasks); },
       [&bench](Tasks& tasks) { bench.hand().allJoined(tasks); }});
}

}  // namespace

void registerStoreReading(Workbench& bench) {
  registerOpen(bench);
  registerSingle(bench);
  registerCounts(bench);
  registerIds(bench);
  registerPages(bench);
  registerRanges(bench);
  registerSearches(bench);
}

}  // namespace bench
