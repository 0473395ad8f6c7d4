// Messages to the person at the terminal, on standard error.
//
// An error says what happened, where, and what to do. Records never go to standard error, messages never to standard
// output.
#ifndef VELAGNSS_APPS_DIAGNOSTICS_H
#define VELAGNSS_APPS_DIAGNOSTICS_H

#include <functional>
#include <string>
#include <string_view>

namespace Host {

enum class eVerbosity { Quiet, Normal, Verbose };

// Set once by the arguments, read everywhere.
void SetVerbosity(eVerbosity verbosity);
eVerbosity Verbosity();

void ReportError(std::string_view message);    // always
void ReportWarning(std::string_view message);  // unless quiet
void ReportNotice(std::string_view message);   // likewise: good to know, nothing is wrong
void ReportDetail(std::string_view message);   // only when verbose
void ReportOutOfMemory() noexcept;             // without allocating any

enum class eMessage { Error, Warning, Notice };

// Writes a message whatever the verbosity is.
void ReportMessage(eMessage kind, std::string_view message);

// The beginning of a message of this kind: "warning: ".
std::string_view MessageStart(eMessage kind);

// While it is set, messages go there, printable and without passwords, and not to standard error if that is a
// terminal: the taker has the screen. Called by the thread that reports.
using t_MessageTaker = std::function<void(eMessage kind, const std::string& message)>;
void SetMessageTaker(t_MessageTaker taker);

// `text` made safe for a terminal: control characters and bytes from 0x7F on as "\xNN".
std::string Printable(std::string_view text);

// True when standard error is a terminal that obeys control sequences, not one of TERM=dumb: for colors and the
// progress line.
bool IsErrorATerminal();

// The end of "name: figures" that fits into `columns` with a column to spare: the name may lose its beginning, but no
// figure does. A figure that does not fit is left out.
std::string_view CutToColumns(std::string_view line, std::size_t columns);

// A line that overwrites itself, cut as above where the terminal is too narrow; empty clears it. Only for a terminal.
void ShowProgressLine(std::string_view line);

}  // namespace Host

#endif  // VELAGNSS_APPS_DIAGNOSTICS_H
