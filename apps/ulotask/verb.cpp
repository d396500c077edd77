#include "verb.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <utility>

namespace ulotask {

Argument& Argument::required() {
  option_->required();
  return *this;
}

Argument& Argument::valueName(const std::string& name) {
  option_->type_name(name);
  return *this;
}

Argument& Argument::oneOf(const std::vector<std::string>& words) {
  option_->check(CLI::IsMember(words));
  return *this;
}

template <typename Number> Argument& Argument::range(Number least, Number most) {
  option_->check(CLI::Range(least, most).description(""));
  return *this;
}

template Argument& Argument::range(int, int);
template Argument& Argument::range(std::int64_t, std::int64_t);

Argument& Argument::showDefault() {
  option_->capture_default_str();
  return *this;
}

Argument& Argument::excludes(const Argument& other) {
  option_->excludes(other.option_);
  return *this;
}

Verb Verb::addVerb(const std::string& name, const std::string& description) {
  return Verb(*app_->add_subcommand(name, description));
}

Verb Verb::addGroup(const std::string& name, const std::string& description) {
  CLI::App* group = app_->add_subcommand(name, description);
  group->require_subcommand(1);
  return Verb(*group);
}

template <typename Value>
Argument Verb::option(const std::string& names, Value& variable, const std::string& description) {
  return Argument(app_->add_option(names, variable, description));
}

template Argument Verb::option(const std::string&, std::string&, const std::string&);
template Argument Verb::option(const std::string&, std::int64_t&, const std::string&);
template Argument Verb::option(const std::string&, std::optional<std::string>&, const std::string&);
template Argument Verb::option(const std::string&, std::optional<int>&, const std::string&);
template Argument Verb::option(const std::string&, std::vector<std::string>&, const std::string&);

Argument Verb::flag(const std::string& name, bool& variable, const std::string& description) {
  return Argument(app_->add_flag(name, variable, description));
}

void Verb::footer(const std::string& text) {
  app_->footer(text);
}

void Verb::run(std::function<void()> work) {
  app_->callback(std::move(work));
}

std::vector<const CLI::App*> verbsOf(const CLI::App& group) {
  return group.get_subcommands([](const CLI::App*) { return true; });
}

}  // namespace ulotask
