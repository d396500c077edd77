// Sends one message and exits immediately, without an event loop.
// usage: channel_sender CHANNEL MESSAGE

#include "QCopChannel.h"

#include <unistd.h>

int main(int, char** arguments) {
  _exit(QCopChannel::send(arguments[1], arguments[2]) ? 0 : 1);
}
