#pragma once

#include "executable.h"
#include "script/template.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace ulo::odb {

// Recently run templates and the programs they resulted in. A repeated call is not parsed,
// formatted or looked up by its text again.
class KnownTemplates {
public:
  class Entry {
  public:
    explicit Entry(const char* text) : pattern(text) {}

    const Template pattern;

    // Returns the program for these texts, or null if unknown.
    [[nodiscard]] Executable* find(const TemplateArguments& arguments) const;
    // Requires: no number of the call is within quotes.
    void add(const TemplateArguments& arguments, std::shared_ptr<Executable> executable);

  private:
    struct Call {
      std::vector<std::string> texts;
      std::shared_ptr<Executable> executable;
    };

    std::vector<Call> calls_;
  };

  // Returns the entry of a template, possibly evicting others. Valid until the next call. Throws
  // Failure if the template is malformed.
  Entry& entry(const char* text);
  void clear() { entries_.clear(); }

private:
  // By the address of the template, which identifies a string literal of a program.
  std::unordered_map<const char*, Entry> entries_;
};

}  // namespace ulo::odb
