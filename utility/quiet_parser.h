// The parser of the vObject library prints debug output to standard output if the environment
// variable YYDEBUG is set, and keeps printing after the variable is unset. The program may have set
// the variable for another parser, so it stays set.
#pragma once

#include <cstdio>

// Discards what this thread prints to standard output while the object lives. Output of other
// threads is not affected. Does nothing unless the variable was set when this or an earlier
// object was created. Only one object at a time may exist in the process.
class QuietParser {
public:
  QuietParser();
  QuietParser(const QuietParser&) = delete;
  QuietParser& operator=(const QuietParser&) = delete;
  ~QuietParser();

private:
  std::FILE* output_ = nullptr;
};
