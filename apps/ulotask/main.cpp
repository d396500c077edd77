// ulotask: the task engine on the command line.

#include "completion.h"
#include "exit_codes.h"
#include "man_page.h"
#include "manual.h"
#include "output.h"
#include "session.h"
#include "standard_descriptors.h"
#include "time_zone.h"
#include "ulo/log_sink.h"
#include "verbs.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <langinfo.h>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>

namespace {

using ulotask::Exit;

// Texts are UTF-8 in every locale, but the widths of characters need a UTF-8 locale.
void useUtf8() {
  std::setlocale(LC_CTYPE, "");
  if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
    std::setlocale(LC_CTYPE, "C.UTF-8");
}

std::string helpFooter() {
  std::string text =
      "Each verb has examples: ulotask VERB --help\n"
      "\n"
      "The store is in $ULO_DATA_DIR, else in $XDG_DATA_HOME/ulo. $ULO_LOG names the "
      "log:\nstderr, syslog, none or a file.\n"
      "\n"
      "Exit codes:\n";
  for (const ulotask::ExitMeaning& entry : ulotask::exitMeanings) {
    const std::string number = std::to_string(static_cast<int>(entry.code));
    text += std::string(4 - number.size(), ' ') + number + "  " + entry.meaning + '\n';
  }
  return text;
}

// Verbs, and the function that adds them.
struct Family {
  std::initializer_list<std::string_view> verbs;
  void (*add)(ulotask::Verb& program, ulotask::Session& session);
};
const Family families[] = {
    {{"list"}, ulotask::addListVerb},
    {{"search"}, ulotask::addSearchVerb},
    {{"show"}, ulotask::addShowVerb},
    {{"add", "edit", "done", "undone", "rm"}, ulotask::addEditVerbs},
    {{"import", "export"}, ulotask::addExchangeVerbs},
    {{"ical"}, ulotask::addIcalVerbs},
    {{"category"}, ulotask::addCategoryVerbs},
    {{"stats"}, ulotask::addStatsVerb},
    {{"changes"}, ulotask::addChangeVerbs},
    {{"sync-item"}, ulotask::addSyncVerbs},
    {{"watch"}, ulotask::addWatchVerb},
    {{"lock"}, ulotask::addLockVerbs},
    {{"db"}, ulotask::addDatabaseVerbs},
};

// Adds the family of the verb `word`, because describing all verbs takes longer than running most;
// or all families if no verb has this name.
void addVerbs(std::string_view word, ulotask::Verb& program, ulotask::Session& session) {
  const auto* const family =
      std::find_if(std::begin(families), std::end(families), [&](const Family& each) {
        return std::find(each.verbs.begin(), each.verbs.end(), word) != each.verbs.end();
      });
  if (family != std::end(families)) {
    family->add(program, session);
    return;
  }
  for (const Family& each : families)
    each.add(program, session);
}

// Keeps the lines of all texts, which newer versions of CLI11 would join and wrap.
template <typename Formatter> void keepLines([[maybe_unused]] Formatter& formatter) {
  if constexpr (requires { formatter.enable_footer_formatting(false); }) {
    formatter.enable_footer_formatting(false);
    formatter.enable_description_formatting(false);
    formatter.right_column_width(std::numeric_limits<std::size_t>::max());
  }
}

int run(int argc, char** argv) {
  const bool completes = argc > 1 && std::strcmp(argv[1], ulotask::completeVerb) == 0;
  const char* zone = std::getenv("TZ");
  if (!completes && zone != nullptr && !ulotask::namesTimeZone(zone))
    ulotask::printError(std::string("the time zone TZ=\"") + zone +
                        "\" is unknown: times are in UTC");
  ulotask::Session session;
  CLI::App app("Keeps a to-do list and exchanges it as vCalendar 1.0 and iCalendar 2.0 texts.",
               "ulotask");
  app.set_version_flag("--version", "ulotask " ULOTASK_VERSION);
  app.require_subcommand(1);
  app.footer(helpFooter());
  keepLines(*app.get_formatter());
  ulotask::Verb program(app);
  addVerbs(argc > 1 ? argv[1] : "", program, session);

  Exit code = Exit::ok;
  const auto fail = [&](Exit with, const std::string& message) {
    ulotask::printError(message);
    code = with;
  };
  try {
    try {
      if (completes)
        ulotask::complete(app, session, {argv + 2, argv + argc});
      else if (argc == 2 && std::strcmp(argv[1], ulo::manPageOption) == 0)
        session.output.write(ulotask::manual(app));
      else
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
      std::ostringstream text;
      app.exit(help, text, text);
      session.output.write(text.str());
    }
    session.output.finish();
  } catch (const CLI::ParseError& error) {
    fail(Exit::usage, std::string(error.what()) + "; see ulotask --help");
  } catch (const ulotask::Failure& failure) {
    // First print the results from before the failure.
    session.output.finishQuietly();
    fail(failure.code(), failure.what());
  }
  return static_cast<int>(code);
}

}  // namespace

int main(int argc, char** argv) {
  ulo::occupyStandardDescriptors();
  // If the reader of a pipe exits early, or a limit on the size of files is reached, a write fails
  // instead.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    useUtf8();
    ulo::openLogSink("ulotask");
    return run(argc, argv);
  } catch (const std::exception& error) {
    static_cast<void>(std::fprintf(stderr, "ulotask: %s\n", error.what()));
    return static_cast<int>(Exit::failed);
  }
}
