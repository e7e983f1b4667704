#include "Zorb/Interrupt.h"

#include <csignal>

namespace Zorb {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void note(int signal) {
  interrupted = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

Interrupt::Interrupt() {
  interrupted = 0;
  handlerBefore_ = std::signal(SIGINT, &note);
  // Whoever started the process wants it to ignore interrupts.
  if (handlerBefore_ == SIG_IGN) std::signal(SIGINT, SIG_IGN);
}

Interrupt::~Interrupt() { std::signal(SIGINT, handlerBefore_); }

bool Interrupt::wished() { return interrupted != 0; }

}  // namespace Zorb
