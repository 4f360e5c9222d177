// Ctrl-C (SIGINT), SIGTERM and SIGHUP (the terminal is gone) end a run between two frames, so that what was
// written is whole.
#pragma once

namespace tool {

// From now on these signals only ask for the end of the run. A signal that the caller of the program has ignored
// (nohup, a background job) stays ignored.
void catchStopSignals();

// Whether one of them came. A loop over frames ends; TFrameSource asks by itself and gives no further frame.
bool isStopRequested();

// Throws the error whose line names the signal and whose exit code is the usual one (129, 130 or 143) when one of
// them came. The program does so after every command; a command whose result needs every frame calls it before it
// reports.
void throwIfStopRequested();

}  // namespace tool
