// Ctrl-C and its like ask the program to stop after what it is doing; a second one ends it at once.
#pragma once

namespace cli {

void watchStopSignals();
// The signal that came, 0 while none did.
int stopSignal();
// Throws Interrupted when a signal came.
void checkStop();

} // namespace cli
