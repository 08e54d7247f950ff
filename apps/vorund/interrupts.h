#pragma once

namespace vorund::app {

/// From now on the first interrupt (Ctrl-C) or request to terminate is only noted; a second one
/// ends the program at once. Signals that the caller has the program ignore stay ignored.
void noteInterrupts();

/// The number of the noted signal, or 0.
int notedInterrupt();

}  // namespace vorund::app
