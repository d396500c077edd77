#pragma once

#include "interpreter.h"
#include "script/template.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace ulo::odb {

// The templates that were run last, with what they came to: a call that was made before is neither
// parsed nor formatted nor looked up by its text again.
class KnownTemplates {
public:
  class Entry {
  public:
    explicit Entry(const char* text) : pattern(text) {}

    const Template pattern;

    // What the template came to with these texts, null when that is not known.
    [[nodiscard]] Executable* find(const TemplateArguments& arguments) const;
    // Requires: no number of the call stands in quotes.
    void add(const TemplateArguments& arguments, std::shared_ptr<Executable> executable);

  private:
    struct Call {
      std::vector<std::string> texts;
      std::shared_ptr<Executable> executable;
    };

    std::vector<Call> calls_;
  };

  // The entry of a template; others may be forgotten for it. Valid until the next call. Throws
  // Failure when the template is wrong.
  Entry& entry(const char* text);
  void clear() { entries_.clear(); }

private:
  // By where the templates stand, which tells a program's literals apart.
  std::unordered_map<const char*, Entry> entries_;
};

}  // namespace ulo::odb
