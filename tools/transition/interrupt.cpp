#include "interrupt.h"

#include <csignal>

namespace zepbmp::transition {

namespace {

volatile std::sig_atomic_t noted_signal = 0;

void note(int signal) { noted_signal = signal; }

}  // namespace

void note_interrupts() {
    struct sigaction action {};
    action.sa_handler = note;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        if (signal != SIGHUP || before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

void check_interrupt() {
    if (noted_signal != 0)
        throw Interrupted(noted_signal);
}

}  // namespace zepbmp::transition
