// Requests to end the program: SIGINT, SIGTERM, SIGHUP.
#ifndef VELAGNSS_APPS_SIGNALS_H
#define VELAGNSS_APPS_SIGNALS_H

#include <chrono>
#include <functional>
#include <thread>

namespace Host {

// From now on the three signals are noted instead of ending the program, and SIGPIPE and SIGXFSZ are ignored: the write
// that fails reports a closed pipe or a file at its size limit. A SIGHUP that the caller ignores (nohup) stays ignored.
// A second signal of the same kind ends the program at once.
void InstallSignalHandlers();

// From now on a SIGHUP does not end the program, not even one that the caller ignores: it is counted, and asks for
// files to be opened anew.
void CountHangups();

// How many have been counted. After this the waits for input go on.
unsigned int HangupsReceived();

// The signal that has come, or 0; `kEndRequested` after `RequestEnd`.
int SignalReceived();

// The user wants the program to end by a key of its own: everything stops as it does for a signal, but the exit code is
// what it would be otherwise. From any thread.
inline constexpr int kEndRequested = -1;
void RequestEnd();

// Whether a second signal of the same kind ends the program at once. It shall not while a terminal is in a state that
// nobody else would restore.
void EndAtSecondSignal(bool on);

// Becomes readable with the first signal, and with each hangup that is counted: a wait for input that also polls this
// descriptor misses none. -1 before `InstallSignalHandlers`.
int SignalDescriptor();

// Waits for this time, or until the first signal.
void PauseUntilSignal(std::chrono::milliseconds time);

// A thread that runs no handlers of signals: they are for the main thread, whose waits they end.
std::thread StartWithoutSignals(const std::function<void()>& work);

}  // namespace Host

#endif  // VELAGNSS_APPS_SIGNALS_H
