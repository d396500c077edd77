#include "completion.h"

#include "arguments.h"
#include "exit_codes.h"
#include "listing.h"
#include "session.h"
#include "task_words.h"
#include "text.h"
#include "verb.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace ulotask {
namespace {

// Longer lists are of no use in a shell.
constexpr std::size_t mostTasks = 50;

struct Candidate {
  std::string value;
  std::string meaning;
};

bool begins(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

const CLI::App* verbNamed(const CLI::App& group, const std::string& name) {
  for (const CLI::App* verb : verbsOf(group)) {
    if (verb->get_name() == name)
      return verb;
  }
  return nullptr;
}

// The position of the word that is being typed.
struct Place {
  const CLI::App* verb = nullptr;       // the verb or group that precedes it
  const CLI::Option* option = nullptr;  // null unless the word is a value of this option
  std::string prefix;                   // the part of the value that has been typed
  std::string before;                   // the text before the value in the same word: "--sort="
  bool mayBeOption = true;
};

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

// The positional argument number `index`, or the last one if that accepts any number of words.
const CLI::Option* positional(const CLI::App& verb, std::size_t index) {
  const CLI::Option* last = nullptr;
  for (const CLI::Option* option : verb.get_options()) {
    if (!option->get_positional())
      continue;
    if (index-- == 0)
      return option;
    last = option;
  }
  return last != nullptr && last->get_items_expected_max() > 1 ? last : nullptr;
}

Place placeOf(const CLI::App& app, const std::vector<std::string>& words) {
  Place place;
  place.verb = &app;
  std::size_t positionals = 0;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const std::string& word = words[i];
    if (place.option != nullptr) {
      place.option = nullptr;
    } else if (place.mayBeOption && word == "--") {
      place.mayBeOption = false;
    } else if (place.mayBeOption && begins(word, "-")) {
      const CLI::Option* option = place.verb->get_option_no_throw(word);
      if (option != nullptr && takesValue(*option))
        place.option = option;
    } else if (const CLI::App* verb = verbNamed(*place.verb, word);
               verb != nullptr && positionals == 0) {
      place.verb = verb;
    } else {
      ++positionals;
    }
  }
  place.prefix = words.back();
  if (place.option != nullptr)
    return place;
  const std::size_t equals = place.prefix.find('=');
  if (place.mayBeOption && begins(place.prefix, "--") && equals != std::string::npos) {
    place.option = place.verb->get_option_no_throw(place.prefix.substr(0, equals));
    place.before = place.prefix.substr(0, equals + 1);
    place.prefix.erase(0, equals + 1);
  } else if (!place.mayBeOption || !begins(place.prefix, "-")) {
    place.option = positional(*place.verb, positionals);
  }
  return place;
}

std::vector<Candidate> tasks(Session& session, const Place& place) {
  struct Wanted {
    const char* verb;
    ZTASK_ENG_Model::TASK_CATEGORY view;
  };
  constexpr Wanted wanted[] = {{"done", ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE},
                               {"undone", ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED}};
  auto view = ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  for (const Wanted& entry : wanted) {
    if (place.verb->get_name() == entry.verb)
      view = entry.view;
  }
  QValueList<unsigned int> uids;
  require(session.store().getAllIDs(uids, view, ZTASK_ENG_Model::TASK_SORT_DUE), "listing");
  std::vector<Candidate> found;
  for (const unsigned int uid : uids) {
    const std::string value = std::to_string(uid);
    ZTASK_ENG_Task task;
    if (begins(value, place.prefix) && session.store().getTask(uid, task) == TASK_ENG_OK)
      found.push_back({value, oneLine(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY))});
    if (found.size() == mostTasks)
      break;
  }
  return found;
}

std::vector<Candidate> categories(Session& session, const Place&) {
  QValueList<QString> names;
  require(session.store().getAllCategories(names), "reading the categories");
  std::vector<Candidate> found;
  for (const QString& name : names) {
    // A name that cannot be shown unchanged cannot be typed either.
    if (!name.isEmpty() && oneLine(name) == name.toStdString())
      found.push_back({name.toStdString(), ""});
  }
  return found;
}

std::vector<Candidate> statuses(Session&, const Place&) {
  std::vector<Candidate> found;
  for (const std::string& word : statusArguments())
    found.push_back({word, ""});
  return found;
}

std::vector<Candidate> priorities(Session&, const Place&) {
  std::vector<Candidate> found;
  for (const ulo::PriorityEntry& entry : ulo::priorities)
    found.push_back({entry.word, std::to_string(codeOf(entry.priority))});
  return found;
}

// The kinds of values by their names in the help, and the functions that list them.
struct Kind {
  const char* name;
  std::vector<Candidate> (*values)(Session&, const Place&);
};
constexpr Kind kinds[] = {
    {"UID", tasks}, {"CATEGORY", categories}, {"STATUS", statuses}, {"PRIORITY", priorities}};
constexpr const char* fileKinds[] = {"FILE", "SCRIPT"};

std::string kindOf(const CLI::Option& option) {
  const std::string name = option.get_positional() ? option.get_name() : option.get_type_name();
  return name.substr(0, name.find(':'));
}

// The words of an option that accepts only some, from its help: "VIEW:{all,due}".
std::vector<Candidate> listedValues(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  std::vector<Candidate> found;
  std::size_t begin = type.find('{');
  while (begin != std::string::npos && type[begin] != '}') {
    const std::size_t end = type.find_first_of(",}", begin + 1);
    if (end == std::string::npos)
      break;
    found.push_back({type.substr(begin + 1, end - begin - 1), ""});
    begin = end;
  }
  return found;
}

std::vector<Candidate> valuesOf(Session& session, const Place& place) {
  const std::string kind = kindOf(*place.option);
  for (const Kind& entry : kinds) {
    if (kind == entry.name) {
      try {
        return entry.values(session, place);
      } catch (const Failure&) {
        return {};
      }
    }
  }
  return listedValues(*place.option);
}

std::vector<Candidate> verbs(const CLI::App& group) {
  std::vector<Candidate> found;
  for (const CLI::App* verb : verbsOf(group))
    found.push_back({verb->get_name(), verb->get_description()});
  return found;
}

std::vector<Candidate> options(const CLI::App& verb) {
  std::vector<Candidate> found;
  for (const CLI::Option* option : verb.get_options()) {
    for (const std::string& name : option->get_lnames())
      found.push_back({"--" + name, option->get_description()});
  }
  return found;
}

}  // namespace

void complete(const CLI::App& app, Session& session, std::vector<std::string> words) {
  if (words.empty())
    words.emplace_back();
  const Place place = placeOf(app, words);
  std::vector<Candidate> found;
  const bool ofOption = place.option != nullptr && !place.option->get_positional();
  if (place.option != nullptr)
    found = valuesOf(session, place);
  else if (place.mayBeOption && begins(place.prefix, "-"))
    found = options(*place.verb);
  else
    found = verbs(*place.verb);

  for (const Candidate& candidate : found) {
    const bool isThere =
        std::find(words.begin(), words.end() - 1, candidate.value) != words.end() - 1;
    if (begins(candidate.value, place.prefix) && (ofOption || !isThere))
      session.output.line(place.before + candidate.value + '\t' + candidate.meaning);
  }
  if (place.option != nullptr && std::find(std::begin(fileKinds), std::end(fileKinds),
                                           kindOf(*place.option)) != std::end(fileKinds))
    session.output.line("\tfiles");
}

}  // namespace ulotask
