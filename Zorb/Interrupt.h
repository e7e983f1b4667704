#pragma once

namespace Zorb {

/// Turns an interrupt (Ctrl-C) into a wish that is asked for, as long as it exists; there is one at
/// a time. A second interrupt ends the process.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  static bool wished();

 private:
  using Handler = void (*)(int);
  Handler handlerBefore_;
};

}  // namespace Zorb
