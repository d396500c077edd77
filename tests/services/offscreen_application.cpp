#include "offscreen_application.h"

#include "ZApplication.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace {

class OffscreenApplication : public testing::Environment {
public:
  void SetUp() override {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("ULO_THEME", "light", 1);
    application_ = std::make_unique<ZApplication>(count_, arguments_);
    application_->setLanguages({"en"});
  }
  void TearDown() override { application_.reset(); }

  std::unique_ptr<ZApplication> application_;

private:
  int count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
};

auto* const environment =
    static_cast<OffscreenApplication*>(testing::AddGlobalTestEnvironment(new OffscreenApplication));

}  // namespace

ZApplication& application() {
  return *environment->application_;
}
