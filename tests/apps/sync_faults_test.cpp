// Exchanges whose temporary files meet a full disk, a read-only directory, or files of another
// user: a whole process, in which system calls fail.

#include "ulotask_runner.h"

#include <filesystem>
#include <fstream>
#include <utility>

using testing::HasSubstr;

namespace {

constexpr char outboundName[] = "/tmp/1.vtodo";
// The adaptor's codes.
constexpr char ok[] = "0";
constexpr char otherError[] = "5";

class SyncFaults : public UlotaskTest {
protected:
  SyncFaults() { add({"Milk"}); }
  ~SyncFaults() override { std::filesystem::remove(outboundName); }

  // Exchanges the task as `sync_client verb 1` with a file on standard input.
  Outcome client(const std::string& verb, const std::string& input = {}) {
    // The shell may be of another architecture than the client.
    const std::string libraries = std::exchange(environment_["LD_PRELOAD"], {});
    const Outcome run = shell("LD_PRELOAD='" + libraries + "' " SYNC_CLIENT " " + verb + " 1 < " +
                              file("item", input));
    environment_["LD_PRELOAD"] = libraries;
    return run;
  }
  void expectNothingSent(const std::string& verb) {
    const Outcome run = client(verb);
    EXPECT_EQ(run.err, otherError) << verb;
    EXPECT_EQ(run.out, "") << verb;
  }
};

const std::string item = calendar(todo("SUMMARY:Bread\r\n"));

TEST_F(SyncFaults, ItemsGoBothWaysWithoutFault) {
  for (const char* verb : {"get", "get-text"}) {
    const Outcome run = client(verb);
    EXPECT_EQ(run.err, ok);
    EXPECT_THAT(run.out, HasSubstr("Milk"));
  }
  EXPECT_EQ(client("put", item).err, ok);
  EXPECT_EQ(client("put-text", item).err, ok);
}

TEST_F(SyncFaults, FullDiskSendsAndStoresNothing) {
  breakTemporaryFiles("full");
  expectNothingSent("get");
  expectNothingSent("get-text");
  EXPECT_FALSE(std::filesystem::exists(outboundName));
  EXPECT_EQ(client("put", item).err, otherError);
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
  EXPECT_EQ(client("put-text", item).err, ok) << "needs no file";
}

TEST_F(SyncFaults, ReadOnlyDirectorySendsAndStoresNothing) {
  breakTemporaryFiles("unwritable");
  expectNothingSent("get");
  expectNothingSent("get-text");
  EXPECT_EQ(client("put", item).err, otherError);
  EXPECT_EQ(uids({"list"}), std::vector<int>{1});
  EXPECT_EQ(client("put-text", item).err, ok) << "needs no file";
}

TEST_F(SyncFaults, ForeignFileIsNeitherOverwrittenNorSent) {
  std::ofstream(outboundName) << "theirs";
  breakTemporaryFiles("foreign");
  expectNothingSent("get");
  expectNothingSent("get-text");
  EXPECT_EQ(readWhole(outboundName), "theirs");
}

TEST_F(SyncFaults, ForeignLinkIsNotFollowed) {
  const std::string target = file("target", "theirs");
  std::filesystem::create_symlink(target, outboundName);
  breakTemporaryFiles("foreign");
  expectNothingSent("get");
  expectNothingSent("get-text");
  EXPECT_EQ(readWhole(target), "theirs");
  EXPECT_TRUE(std::filesystem::is_symlink(outboundName));
}

TEST_F(SyncFaults, RemovableLinkIsReplaced) {
  const std::string target = file("target", "theirs");
  for (const char* verb : {"get", "get-text"}) {
    std::filesystem::create_symlink(target, outboundName);
    const Outcome run = client(verb);
    EXPECT_EQ(run.err, ok);
    EXPECT_THAT(run.out, HasSubstr("Milk"));
    EXPECT_EQ(readWhole(target), "theirs");
    EXPECT_FALSE(std::filesystem::is_symlink(outboundName));
  }
}

}  // namespace
