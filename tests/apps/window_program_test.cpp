// The options of the programs with windows. Without a display, an application object would end the
// program.

#include "ulotask_runner.h"

#include <QDeadlineTimer>

#include <filesystem>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* programs[] = {ULO_TASKS, ULO_ACTION};

class WindowProgram : public UlotaskTest {
protected:
  WindowProgram() { environment_["QT_QPA_PLATFORM"] = "xcb"; }

  Outcome run(const char* program, const QStringList& arguments) {
    QProcess process;
    prepare(process);
    process.setWorkingDirectory(QString::fromStdString(path("")));
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(60'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << program;
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
  }
  static std::string nameOf(const char* program) {
    return std::filesystem::path(program).filename();
  }
};

TEST_F(WindowProgram, PrintsHelpWithoutDisplay) {
  for (const char* program : programs) {
    for (const char* option : {"--help", "-h"}) {
      const Outcome help = run(program, {"file.vcs", option, "--unknown"});
      EXPECT_EQ(help.code, 0);
      EXPECT_EQ(help.err, "");
      EXPECT_THAT(help.out, AllOf(HasSubstr("\nUsage: " + nameOf(program) + " [OPTIONS] "),
                                  HasSubstr("-h,--help"), HasSubstr("--version"),
                                  HasSubstr("Exit codes:\n   0  done")));
    }
  }
  EXPECT_FALSE(std::filesystem::exists(path("data")));
}

TEST_F(WindowProgram, PrintsVersionOfUlotaskWithoutDisplay) {
  const std::string version = succeed({"--version"}).out.substr(std::string("ulotask").size());
  for (const char* program : programs) {
    const Outcome printed = run(program, {"--version"});
    EXPECT_EQ(printed.code, 0);
    EXPECT_EQ(printed.out, nameOf(program) + version);
    EXPECT_EQ(printed.err, "");
  }
}

TEST_F(WindowProgram, RefusesUnknownOptionsAsUlotaskDoes) {
  for (const char* option : {"--unknown", "-x", "-platforms", "--versions"}) {
    const Outcome model = ulotask({"list", option});
    const std::string reason = ": The following argument was not expected: " + std::string(option);
    EXPECT_THAT(model.err, HasSubstr(reason));
    for (const char* program : programs) {
      const Outcome refused = run(program, {option});
      EXPECT_EQ(refused.code, model.code);
      EXPECT_EQ(refused.out, "");
      EXPECT_THAT(refused.err, StartsWith(nameOf(program) + reason + "; see " + nameOf(program) +
                                          " --help\nUsage: " + nameOf(program) + " [OPTIONS] "));
    }
  }
}

TEST_F(WindowProgram, ToolkitOptionsNeedTheirValues) {
  for (const char* program : programs) {
    const Outcome refused = run(program, {"-platform"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_THAT(refused.err, HasSubstr(": -platform requires a value; "));
  }
}

TEST_F(WindowProgram, ActionNeedsTwoOperands) {
  for (const QStringList& operands :
       {QStringList{}, QStringList{"TASK_SAVE"}, QStringList{"TASK_SAVE", "a", "b"}}) {
    const Outcome refused = run(ULO_ACTION, operands);
    EXPECT_EQ(refused.code, 2);
    EXPECT_THAT(refused.err, EndsWith("Usage: ulo-action [OPTIONS] ACTION FILE\n"));
  }
}

// The toolkit gets its options, wherever they are: xcb would end the program.
TEST_F(WindowProgram, AcceptsToolkitOptions) {
  EXPECT_EQ(run(ULO_ACTION, {"-platform", "offscreen", "TASK_VIEW", "missing.vcs"}).code, 1);
  EXPECT_EQ(run(ULO_ACTION, {"TASK_VIEW", "missing.vcs", "--platform", "offscreen", "-style=fusion",
                             "-reverse"})
                .code,
            1);
}

TEST_F(WindowProgram, TasksImportsFileWhoseNameIsAnOption) {
  file("--version", calendar(todo("SUMMARY:Buy milk\r\n")));
  file("-reverse", calendar(todo("SUMMARY:Call the bank\r\n")));
  QProcess process;
  prepare(process);
  process.setWorkingDirectory(QString::fromStdString(path("")));
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process.start(ULO_TASKS, {"-platform", "offscreen", "--", "--version", "-reverse"});
  ASSERT_TRUE(process.waitForStarted());
  const QDeadlineTimer end(60'000);
  std::string listed;
  while (!end.hasExpired() && (listed.find("Buy milk") == std::string::npos ||
                               listed.find("Call the bank") == std::string::npos))
    listed = ulotask({"list"}).out;
  EXPECT_THAT(listed, AllOf(HasSubstr("Buy milk"), HasSubstr("Call the bank")));
  process.terminate();
  EXPECT_TRUE(process.waitForFinished(60'000));
}

TEST_F(WindowProgram, BashCompletesOptionsAndFiles) {
  // The replies of bash's function for words that follow the program, and the completions that it
  // leaves to readline.
  const auto completed = [this](const char* program, const std::string& words) {
    return shell("source '" ULO_SOURCE_DIR "/packaging/completions/ulo-programs.bash'\n"
                 "compopt() { echo \"compopt $*\"; }\n"
                 "COMP_WORDS=(x " +
                 words +
                 ")\n"
                 "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                 "_ulo_program '" +
                 program + "' && echo \"${COMPREPLY[*]}\"")
        .out;
  };
  for (const char* program : programs) {
    EXPECT_EQ(completed(program, "--"), "--help --version\n");
    EXPECT_EQ(completed(program, "a --v"), "--version\n");
    EXPECT_EQ(completed(program, "a ''"), "compopt -o default -o filenames\n\n");
  }
  EXPECT_EQ(completed(ULO_ACTION, "''"), "TASK_SAVE TASK_VIEW\n");
  EXPECT_EQ(completed(ULO_ACTION, "TASK_V"), "TASK_VIEW\n");
}

}  // namespace
