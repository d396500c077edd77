#include "gate.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace company {

Gate::Gate() {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
    throw std::runtime_error(std::string("socketpair: ") + std::strerror(errno));
  outside_ = Handle(ends[0]);
  inside_ = Handle(ends[1]);
}

void Gate::waitFor(int programs) {
  constexpr int longestWait = 10'000;  // milliseconds
  for (int arrived = 0; arrived < programs; ++arrived) {
    pollfd news{outside_.number(), POLLIN, 0};
    char byte = 0;
    if (poll(&news, 1, longestWait) <= 0 || read(outside_.number(), &byte, 1) != 1)
      return;
  }
}

void Gate::open() {
  shutdown(outside_.number(), SHUT_WR);
}

std::vector<Outcome> runTogether(std::vector<Launch> launches) {
  Gate gate;
  std::vector<Process> processes;
  for (Launch& launch : launches) {
    launch.gate = gate.number();
    processes.emplace_back(launch);
  }
  gate.waitFor(static_cast<int>(launches.size()));
  gate.open();
  std::vector<Outcome> outcomes;
  for (Process& process : processes)
    outcomes.push_back(process.wait());
  return outcomes;
}

}  // namespace company
