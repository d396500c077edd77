// Sends one message and is gone: without an event loop, and without waiting.
// usage: channel_sender CHANNEL MESSAGE

#include "QCopChannel.h"

#include <unistd.h>

int main(int, char** arguments) {
  _exit(QCopChannel::send(arguments[1], arguments[2]) ? 0 : 1);
}
