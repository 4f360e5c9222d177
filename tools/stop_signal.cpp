#include "tools/stop_signal.h"

#include "tools/cli_error.h"

#include <csignal>

namespace tool {
namespace {

volatile std::sig_atomic_t stopSignal = 0;  // the signal that came; a handler can reach nothing but a global

void noteSignal(int signal) {
  stopSignal = signal;
}

void catchUnlessIgnored(int signal) {
  struct sigaction current = {};
  if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler != SIG_IGN) {
    current.sa_handler = noteSignal;
    current.sa_flags = SA_RESTART;  // reading and writing go on: the frame at hand is finished
    sigaction(signal, &current, nullptr);
  }
}

}  // namespace

void catchStopSignals() {
  catchUnlessIgnored(SIGINT);
  catchUnlessIgnored(SIGTERM);
  catchUnlessIgnored(SIGHUP);
}

bool isStopRequested() {
  return stopSignal != 0;
}

void throwIfStopRequested() {
  if (stopSignal == SIGINT) {
    throw TCliError(TExit::interrupted, "stopped by Ctrl-C (SIGINT); what was written so far is whole");
  }
  if (stopSignal == SIGTERM) {
    throw TCliError(TExit::terminated, "stopped by SIGTERM; what was written so far is whole");
  }
  if (stopSignal == SIGHUP) {
    throw TCliError(TExit::hungUp, "stopped by SIGHUP; what was written so far is whole");
  }
}

}  // namespace tool
