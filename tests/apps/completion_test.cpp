// The completions that the program offers to shells, and how bash uses them.

#include "ulotask_runner.h"

#include <sstream>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Completion : public UlotaskTest {
protected:
  static std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
      result.push_back(line);
    return result;
  }
  // The lines that the program prints for these words. The last word is being typed.
  std::vector<std::string> offered(Arguments words) {
    words.insert(words.begin(), "__complete");
    return lines(succeed(words).out);
  }
  // Only the values.
  std::vector<std::string> values(const Arguments& words) {
    std::vector<std::string> result;
    for (const std::string& line : offered(words))
      result.push_back(line.substr(0, line.find('\t')));
    return result;
  }

  // The replies of bash's function for `words`, shell text after the program's name as bash splits
  // it, and the options that it sets.
  std::vector<std::string> inBash(const std::string& words, int key = '\t') {
    const std::string script = "source '" ULO_SOURCE_DIR "/packaging/completions/ulotask.bash'\n"
                               "compopt() { echo \"compopt $*\"; }\n"
                               "COMP_WORDS=(ulotask " +
                               words +
                               ")\n"
                               "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                               "COMP_TYPE=" +
                               std::to_string(key) +
                               "\n"
                               "_ulotask \"$ULOTASK\" || exit\n"
                               "((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"\n";
    const Outcome run = shell(script);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
    std::vector<std::string> result = lines(run.out);
    EXPECT_THAT(result, testing::Not(IsEmpty()));
    EXPECT_EQ(result.at(0), "compopt -o nosort");
    result.erase(result.begin());
    return result;
  }
};

TEST_F(Completion, OffersTheVerbsOfTheHelp) {
  const std::string help = succeed({"--help"}).out;
  const std::vector<std::string> offeredLines = offered({""});
  EXPECT_GE(offeredLines.size(), 14U);
  for (const std::string& line : offeredLines) {
    const std::size_t tab = line.find('\t');
    EXPECT_THAT(help, HasSubstr("\n  " + line.substr(0, tab) + " ")) << line;
    EXPECT_THAT(help, HasSubstr(line.substr(tab + 1))) << line;
  }
  EXPECT_THAT(offered({"cat"}), ElementsAre("category\tList and change the categories"));
  EXPECT_THAT(values({"category", "r"}), ElementsAre("rename", "rm"));
  EXPECT_THAT(values({"db", ""}), ElementsAre("explain", "check", "backup", "restore", "rescue"));
  EXPECT_THAT(help, Not(HasSubstr("__complete")));
}

TEST_F(Completion, OffersTheOptionsOfTheVerb) {
  EXPECT_THAT(values({"list", "--"}), ElementsAre("--help", "--view", "--category", "--sort",
                                                  "--limit", "--after", "--json"));
  EXPECT_THAT(offered({"list", "--js"}), ElementsAre("--json\tPrint a JSON array for programs"));
  EXPECT_THAT(values({"category", "rm", "--w"}), ElementsAre("--with-tasks"));
  EXPECT_THAT(values({"--v"}), ElementsAre("--version"));
}

TEST_F(Completion, OffersAnOptionOnce) {
  EXPECT_THAT(values({"list", "--json", "--j"}), IsEmpty());
  EXPECT_THAT(values({"list", "--view", "all", "--v"}), IsEmpty());
}

TEST_F(Completion, OffersWordsThatOptionAccepts) {
  EXPECT_THAT(values({"list", "--view", ""}), ElementsAre("all", "due", "incomplete", "completed"));
  EXPECT_THAT(values({"list", "--view", "co"}), ElementsAre("completed"));
  EXPECT_THAT(values({"list", "--view=co"}), ElementsAre("--view=completed"));
  EXPECT_THAT(values({"list", "--sort", ""}), ElementsAre("due", "priority"));
  EXPECT_THAT(values({"edit", "1", "--status", "de"}), ElementsAre("declined", "delegated"));
  EXPECT_THAT(values({"add", "x", "--priority", ""}), ElementsAre("high", "normal", "low"));
  EXPECT_THAT(values({"list", "--limit", ""}), IsEmpty());
}

TEST_F(Completion, OfferedWordsAreAccepted) {
  add({"x"});
  for (Arguments words : {Arguments{"edit", "1", "--status"},
                          {"edit", "1", "--priority"},
                          {"list", "--view"},
                          {"list", "--sort"}}) {
    words.emplace_back();
    const std::vector<std::string> offered = values(words);
    EXPECT_GE(offered.size(), 2U) << words.end()[-2];
    for (const std::string& value : offered) {
      words.back() = value;
      succeed(words);
    }
  }
}

TEST_F(Completion, OffersCategoryNames) {
  succeed({"category", "add", "spare time", "Garden"});
  EXPECT_THAT(
      values({"add", "x", "--category", ""}),
      ElementsAre("none", "meeting", "vacation", "appointment", "party", "spare time", "Garden"));
  EXPECT_THAT(values({"list", "--category", "sp"}), ElementsAre("spare time"));
  EXPECT_THAT(values({"category", "rm", "party", "pa"}), IsEmpty());
  EXPECT_THAT(values({"category", "rename", "me"}), ElementsAre("meeting"));
  EXPECT_THAT(values({"category", "rename", "meeting", ""}), IsEmpty());
}

TEST_F(Completion, OmitsNamesThatCannotBeShown) {
  succeed({"category", "add", "a\x1b[31m", "b\nc", "d"});
  const std::vector<std::string> names = values({"list", "--category", ""});
  EXPECT_EQ(names.size(), 6U);
  EXPECT_THAT(names, Contains("d"));
}

TEST_F(Completion, OffersUidsWithSummariesInDueOrder) {
  for (const char* due : {"2027-03-02", "2027-03-01", "2027-03-03"})
    add({std::string("due\t") + due, "--due", due});
  EXPECT_THAT(offered({"show", ""}),
              ElementsAre("2\tdue 2027-03-01", "1\tdue 2027-03-02", "3\tdue 2027-03-03"));
  EXPECT_THAT(values({"list", "--after", "3"}), ElementsAre("3"));
  EXPECT_THAT(values({"rm", "2", ""}), ElementsAre("1", "3"));
  EXPECT_THAT(values({"show", "2", ""}), IsEmpty());
  succeed({"done", "1"});
  EXPECT_THAT(values({"done", ""}), ElementsAre("2", "3"));
  EXPECT_THAT(values({"undone", ""}), ElementsAre("1"));
}

TEST_F(Completion, LimitsNumberOfUids) {
  for (int i = 0; i < 3; ++i)
    add({"x"});
  sql("WITH RECURSIVE n(i) AS (VALUES (4) UNION ALL SELECT i + 1 FROM n WHERE i < 60) "
      "INSERT INTO task_table_task SELECT i, priority, status, note, summary, uuid, alarm, due, "
      "\"end\", categoryUid, revision FROM task_table_task, n WHERE UID = 1");
  EXPECT_EQ(values({"show", ""}).size(), 50U);
  EXPECT_THAT(values({"show", "6"}), ElementsAre("60", "6"));
}

TEST_F(Completion, OffersFilesWhereValid) {
  for (const Arguments& words : std::vector<Arguments>{{"import", ""},
                                                       {"import", "a.vcs", ""},
                                                       {"export", "-o", ""},
                                                       {"export", "--output", ""},
                                                       {"db", "explain", ""}})
    EXPECT_THAT(offered(words), ElementsAre("\tfiles")) << testing::PrintToString(words);
  EXPECT_THAT(offered({"stats", ""}), IsEmpty());
}

TEST_F(Completion, OffersNoOptionsAfterTwoDashes) {
  EXPECT_THAT(values({"add", "--", "--"}), IsEmpty());
  EXPECT_THAT(values({"add", "--", "--category", ""}), IsEmpty());
}

TEST_F(Completion, AddsNothingIfStoreCannotBeOpened) {
  environment_["ULO_DATA_DIR"] = file("occupied", "");
  EXPECT_THAT(values({"show", ""}), IsEmpty());
  EXPECT_THAT(values({"list", "--category", ""}), IsEmpty());
  EXPECT_THAT(values({"list", "--view", "d"}), ElementsAre("due"));
}

TEST_F(Completion, CompletesEmptyLineWithVerbs) {
  const std::string offered = succeed({"__complete"}).out;
  EXPECT_THAT(offered, HasSubstr("list\t"));
  EXPECT_EQ(offered, succeed({"__complete", ""}).out);
}

TEST_F(Completion, BashInsertsSingleMatch) {
  EXPECT_THAT(inBash("sea"), ElementsAre("search"));
  EXPECT_THAT(inBash("list --view co"), ElementsAre("completed"));
  EXPECT_THAT(inBash("list --view nowhere"), IsEmpty());
}

TEST_F(Completion, BashShowsDescriptionsOfSeveralMatches) {
  add({"Buy milk"});
  add({"Call $(the) bank"});
  EXPECT_THAT(inBash("show ''"), ElementsAre("2  (Call $(the) bank)", "1  (Buy milk)"));
  EXPECT_THAT(inBash("show 1"), ElementsAre("1"));
  constexpr int menu = '%';
  EXPECT_THAT(inBash("show ''", menu), ElementsAre("2", "1"));
}

TEST_F(Completion, BashSplitsAtEqualsSigns) {
  EXPECT_THAT(inBash("list --view = co"), ElementsAre("completed"));
  EXPECT_THAT(inBash("list --sort ="), ElementsAre("due", "priority"));
  EXPECT_THAT(inBash("list --sort = due --vi"), ElementsAre("--view"));
}

TEST_F(Completion, BashQuotesWhatItInserts) {
  succeed({"category", "add", "spare time", "a$b\"c", "it's"});
  EXPECT_THAT(inBash("list --category sp"), ElementsAre("spare\\ time"));
  // COMP_WORDS holds words as they are typed.
  EXPECT_THAT(inBash("list --category '\"sp'"), ElementsAre("spare time"));
  EXPECT_THAT(inBash("list --category 'spare\\ t'"), ElementsAre("spare\\ time"));
  EXPECT_THAT(inBash("list --category 'a\\$'"), ElementsAre("a\\$b\\\"c"));
  EXPECT_THAT(inBash("list --category '\"a\\$'"), ElementsAre("a\\$b\\\"c"));
  EXPECT_THAT(inBash("list --category \"'it\""), ElementsAre("it'\\''s"));
}

TEST_F(Completion, BashCompletesFiles) {
  EXPECT_THAT(inBash("import ''"), ElementsAre("compopt -o default -o filenames"));
}

TEST_F(Completion, BashKnowsTheProgram) {
  EXPECT_THAT(
      shell("source '" ULO_SOURCE_DIR "/packaging/completions/ulotask.bash' && complete -p ulotask")
          .out,
      HasSubstr("-F _ulotask ulotask"));
}

}  // namespace
