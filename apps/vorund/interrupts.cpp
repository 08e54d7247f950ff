#include "interrupts.h"

#include <signal.h>

namespace vorund::app {
namespace {

volatile sig_atomic_t noted_signal = 0;

void note(int signal) {
    noted_signal = signal;
}

void noteSignal(int signal) {
    struct sigaction former {};
    sigaction(signal, nullptr, &former);
    if (former.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

}  // namespace

void noteInterrupts() {
    noteSignal(SIGINT);
    noteSignal(SIGTERM);
    noteSignal(SIGHUP);
}

int notedInterrupt() {
    return noted_signal;
}

}  // namespace vorund::app
