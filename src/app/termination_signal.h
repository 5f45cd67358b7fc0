#pragma once

namespace kibo {

/// Lets the program end in order when the system asks it to (SIGTERM, SIGINT) instead of at once.
/// A signal handler may do no more than set a flag, so the event loop asks for it now and then.
void watchTerminationSignals();

/// True once the process was asked to end.
bool terminationRequested();

}  // namespace kibo
