// Signals that end the Tasks application, without a display.

#include "window/end_signals.h"

#include "dialogs_test.h"
#include "window/window_test.h"

#include <csignal>

using tasks::EndSignals;

namespace {

class Signals : public Window {
protected:
  ~Signals() override {
    for (const int kind : {SIGHUP, SIGINT, SIGTERM})
      std::signal(kind, SIG_DFL);
  }
};

TEST_F(Signals, CloseWindowAndSaveEdits) {
  for (const int kind : {SIGHUP, SIGINT, SIGTERM}) {
    open();
    const EndSignals endSignals(*window_);
    key(Qt::Key_F2);
    type("a");
    std::raise(kind);
    EXPECT_TRUE(waitFor([this] { return !window_->isVisible(); })) << kind;
  }
  EXPECT_EQ(allUids().size(), 3U);
}

TEST_F(Signals, CloseDialogs) {
  open();
  const EndSignals endSignals(*window_);
  key(Qt::Key_F2);
  type("a");
  inDialog<QDialog>([this] { key(Qt::Key_Escape); },
                    [this](QDialog&) {
                      std::raise(SIGTERM);
                      EXPECT_TRUE(waitFor([this] { return !window_->isVisible(); }));
                    });
  EXPECT_EQ(allUids().size(), 1U);
}

// A program that cannot save, and says so, would otherwise not end.
TEST_F(Signals, SecondOneHasItsDefaultEffect) {
  open();
  const EndSignals endSignals(*window_);
  std::raise(SIGTERM);
  EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL);
}

TEST_F(Signals, IgnoredOnesStayIgnored) {
  std::signal(SIGHUP, SIG_IGN);
  open();
  const EndSignals endSignals(*window_);
  std::raise(SIGHUP);
  finishEvents();
  EXPECT_TRUE(window_->isVisible());
  EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST_F(Signals, FormerEffectReturns) {
  std::signal(SIGINT, SIG_IGN);
  open();
  { const EndSignals endSignals(*window_); }
  EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_IGN);
  EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL);
}

}  // namespace
