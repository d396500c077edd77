// Tests for the security library as applications open it, in a program without widgets.

#include "lock_test.h"

#include "log_capture.h"

#include <gmock/gmock.h>

#include <dlfcn.h>

namespace {

using testing::HasSubstr;

class LockLibraryTest : public LockTest {
protected:
  void SetUp() override {
    handle_ = dlopen("libulosecuritysetup.so", RTLD_LAZY);
    ASSERT_NE(handle_, nullptr) << dlerror();
    mayUse_ = reinterpret_cast<int (*)(const char*, int)>(
        dlsym(handle_, "SETUP_SECURITY_Util_appLockCheck_modelUI"));
    ASSERT_NE(mayUse_, nullptr) << dlerror();
  }
  void TearDown() override {
    if (handle_ != nullptr)
      dlclose(handle_);
  }

  void* handle_ = nullptr;
  int (*mayUse_)(const char*, int) = nullptr;
};

constexpr char application[] = "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}";

TEST_F(LockLibraryTest, GrantsAccessWithoutLock) {
  LogCapture log;
  EXPECT_NE(mayUse_(application, 1), 0);
  EXPECT_NE(mayUse_(nullptr, 0), 0);
  EXPECT_EQ(log.text(), "");
}

TEST_F(LockLibraryTest, DeniesAccessIfNoDialogCanBeShown) {
  set("1234");
  LogCapture log;
  EXPECT_EQ(mayUse_(application, 1), 0);
  EXPECT_THAT(log.text(), HasSubstr(std::string("The lock of ") + application +
                                    " can't be opened: there is no application to ask in"));
  EXPECT_EQ(mayUse_(nullptr, 1), 0);
}

TEST_F(LockLibraryTest, DeniesAccessForDamagedLock) {
  write("{");
  LogCapture log;
  EXPECT_EQ(mayUse_(application, 1), 0);
  EXPECT_THAT(log.text(), HasSubstr("it is damaged"));
  EXPECT_THAT(log.text(), HasSubstr(std::string(application) + " stays closed"));
}

TEST_F(LockLibraryTest, StaysLoadedAfterClose) {
  dlclose(std::exchange(handle_, nullptr));
  void* again = dlopen("libulosecuritysetup.so", RTLD_LAZY | RTLD_NOLOAD);
  EXPECT_NE(again, nullptr);
  if (again != nullptr)
    dlclose(again);
}

}  // namespace
