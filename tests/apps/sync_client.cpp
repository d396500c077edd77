// A minimal synchronization engine: `sync_client get|put|get-text|put-text UID` exchanges one item
// between the store and standard input or output, and prints the code of the adaptor on standard
// error.

#include "TASK_ENG_SyncML.h"

#include "ulo/log_sink.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>
#include <unistd.h>

int main(int count, char** arguments) {
  if (count != 3)
    return 2;
  ulo::openLogSink("sync_client");
  const std::string verb = arguments[1];
  auto uid = static_cast<unsigned int>(std::atoi(arguments[2]));
  TASK_ENG_SyncML adaptor;
  int code = -1;
  if (verb == "get") {
    int size = 0;
    code = adaptor.getEvent(STDOUT_FILENO, size, 1 << 20, uid);
  } else if (verb == "get-text") {
    std::string text;
    code = adaptor.getEvent(text, uid);
    std::cout << text;
  } else if (verb == "put") {
    code = adaptor.addEvent(STDIN_FILENO, 0, uid);
  } else if (verb == "put-text") {
    const std::string text{std::istreambuf_iterator<char>(std::cin), {}};
    code = adaptor.addEvent(text, uid);
  }
  std::cerr << code;
  return 0;
}
