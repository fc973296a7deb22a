#pragma once

/// From now on Ctrl-C and the other polite signals only make isInterrupted() true, so that what was begun is
/// finished; a second one ends the program at once.
void holdInterrupts();

/// True once such a signal came. Commands then begin with no further file.
bool isInterrupted();

/// Ends the program by the signal that came, with a message; without one, nothing happens.
void endIfInterrupted();
