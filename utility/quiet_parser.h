// The parser of the vObject library prints its steps to standard output if the environment
// variable YYDEBUG is set, and goes on to do so when it no longer is. The variable belongs to the
// program, which may mean another parser by it, so it is neither unset nor hidden.
#pragma once

#include <cstdio>

// While it lives, what the parser prints in this thread is dropped. What other threads print to
// standard output goes out. Does nothing in a process that never had the variable at such a time.
// One at a time in the whole process, as the parser itself.
class QuietParser {
public:
  QuietParser();
  QuietParser(const QuietParser&) = delete;
  QuietParser& operator=(const QuietParser&) = delete;
  ~QuietParser();

private:
  std::FILE* output_ = nullptr;
};
