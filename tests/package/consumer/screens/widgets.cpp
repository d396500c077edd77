// A program that uses the widgets alone.
#include <ZApplication.h>
#include <cstdio>
#include <ulo/texts.h>

int main(int argc, char** argv) {
  const ZApplication application(argc, argv);
  std::printf("widgets: %s\n", qPrintable(ulo::text("TXT_NONE", "English")));
}
