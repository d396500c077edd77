#include "known_templates.h"

#include <algorithm>

namespace ulo::odb {
namespace {

// The store uses fewer than thirty.
constexpr std::size_t templatesKept = 256;
// Per template. The store uses at most two different texts, the names of its indexes.
constexpr std::size_t callsKept = 4;

}  // namespace

Executable* KnownTemplates::Entry::find(const TemplateArguments& arguments) const {
  for (const Call& call : calls_)
    if (std::equal(call.texts.begin(), call.texts.end(), arguments.texts.begin(),
                   arguments.texts.end()))
      return call.executable.get();
  return nullptr;
}

void KnownTemplates::Entry::add(const TemplateArguments& arguments,
                                std::shared_ptr<Executable> executable) {
  if (calls_.size() == callsKept)
    calls_.erase(calls_.begin());
  calls_.push_back({{arguments.texts.begin(), arguments.texts.end()}, std::move(executable)});
}

KnownTemplates::Entry& KnownTemplates::entry(const char* text) {
  if (const auto found = entries_.find(text); found != entries_.end()) {
    if (found->second.pattern.text() == text)
      return found->second;
    // A different template is at this address now.
    entries_.erase(found);
  }
  if (entries_.size() == templatesKept)
    entries_.clear();
  return entries_.try_emplace(text, text).first->second;
}

}  // namespace ulo::odb
