// The check of the application lock by the entry points.

#include "lock_check.h"

#include "screen_test.h"

using testing::ElementsAre;

namespace {

class Lock : public Screen {};

TEST_F(Lock, OpenLockGrantsAccess) {
  EXPECT_EQ(appLockCheck(), 1);
  EXPECT_THAT(platform_.lockCalls, ElementsAre("{9a4cdb74-34ec-415e-ba36-b8c2a35d0071} 1"));
  EXPECT_THAT(lines(), ElementsAre("get dllHandle success!\n", "verify successed!\n"));
  EXPECT_EQ(platform_.librariesOpen, 0);
}

TEST_F(Lock, NonzeroResultGrantsAccess) {
  for (const int answer : {2, -1}) {
    platform_.lockResult = answer;
    EXPECT_EQ(appLockCheck(), 1);
  }
}

TEST_F(Lock, RejectedCodeDeniesAccess) {
  platform_.lockResult = 0;
  EXPECT_EQ(appLockCheck(), 0);
  EXPECT_THAT(lines(), ElementsAre("get dllHandle success!\n", "verify failed!\n"));
  EXPECT_EQ(platform_.librariesOpen, 0);
}

TEST_F(Lock, DeniesAccessWithoutLibrary) {
  platform_.hasLockLibrary = false;
  EXPECT_EQ(appLockCheck(), 0);
  EXPECT_THAT(lines(), ElementsAre("get dllHandle failed!\n"));
}

TEST_F(Lock, LibraryStaysOpenWithoutFunction) {
  platform_.hasLockFunction = false;
  EXPECT_EQ(appLockCheck(), 0);
  EXPECT_THAT(lines(),
              ElementsAre("get dllHandle success!\n", " SSU_appLockCheck_modelUI failed!\n"));
  EXPECT_EQ(platform_.librariesOpen, 1);
}

}  // namespace
