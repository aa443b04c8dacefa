#pragma once

#include <stdexcept>

namespace zepbmp::transition {

/// Thrown by check_interrupt; deliberately no Error: nobody but main() may swallow it.
class Interrupted : public std::runtime_error {
public:
    explicit Interrupted(int signal) : std::runtime_error("interrupted"), signal_(signal) {}
    int signal() const { return signal_; }

private:
    int signal_;
};

/// From now on SIGINT, SIGTERM and SIGHUP are only noted. A SIGHUP that the program was started to ignore stays
/// ignored.
void note_interrupts();

/// Throws Interrupted if a signal was noted. Called once per frame and once per packet.
void check_interrupt();

}  // namespace zepbmp::transition
