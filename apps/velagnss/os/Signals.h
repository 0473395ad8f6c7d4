// The wish of the user or the system that the program end: SIGINT, SIGTERM, SIGHUP.
#ifndef VELAGNSS_APPS_SIGNALS_H
#define VELAGNSS_APPS_SIGNALS_H

namespace Host {

// Notes the three signals from now on instead of dying by them, and ignores SIGPIPE and SIGXFSZ: a closed pipe and a
// file at its size limit are told by the write that fails. A SIGHUP that the caller ignores (nohup) stays ignored. A
// second signal of the same kind ends the program at once.
void InstallSignalHandlers();

// The signal that asked for the end, or 0.
int SignalReceived();

// Becomes readable with the first signal: a wait for input that also polls this descriptor misses none. -1 before
// `InstallSignalHandlers`.
int SignalDescriptor();

}  // namespace Host

#endif  // VELAGNSS_APPS_SIGNALS_H
